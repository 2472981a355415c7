#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace forms {

// One entry of a form's menu bar: a bar title, a submenu, a command or a separator ("-").
class MenuItem {
public:
    MenuItem(std::string name, std::string caption, std::string shortcut = {})
        : Caption(std::move(caption)), Shortcut(std::move(shortcut)), name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    std::string Caption;
    // A key the menu owns in every control of its form, as "Ctrl+S", "Shift+F1", "Shift+Ctrl+F2".
    std::string Shortcut;
    bool Enabled = true;
    bool Visible = true;
    bool isSeparator() const { return Caption == "-"; }

    MenuItem& add(std::string name, std::string caption, std::string shortcut = {});
    const std::vector<std::unique_ptr<MenuItem>>& items() const { return items_; }
    MenuItem* find(const std::string& name);

    std::function<void()> Click;

private:
    std::string name_;
    std::vector<std::unique_ptr<MenuItem>> items_;
};

} // namespace forms
