#pragma once
#include <QString>
#include <functional>

#include "forms/ports.h"

namespace qtface {

// The program's modal boxes with Qt's dialogs. Before a box opens, the windows
// are brought up to date, so the user sees what the box is about.
class QtDialogs : public forms::DialogsPort {
public:
    explicit QtDialogs(std::function<void()> beforeModal = {}) : beforeModal_(std::move(beforeModal)) {}

    int MsgBox(const std::string& text, int buttons, const std::string& title) override;
    std::string InputBox(const std::string& prompt, const std::string& title) override;
    std::optional<std::string> ShowOpen(const std::string& filter) override;
    std::optional<forms::Color> ShowColor() override;
    std::optional<std::string> ShowSave(const std::string& name, const std::string& filter) override;

    // "Pictures|*.jpg;*.jpeg|GIF|*.gif" as Qt writes it: "Pictures (*.jpg *.jpeg);;GIF (*.gif)".
    static QString qtFilter(const std::string& filter);

private:
    void prepare() const;
    std::function<void()> beforeModal_;
};

} // namespace qtface
