#include "forms/menu.h"

namespace forms {

MenuItem& MenuItem::add(std::string name, std::string caption, std::string shortcut) {
    items_.push_back(std::make_unique<MenuItem>(std::move(name), std::move(caption), std::move(shortcut)));
    return *items_.back();
}

MenuItem* MenuItem::find(const std::string& name) {
    if (name_ == name) return this;
    for (auto& item : items_)
        if (MenuItem* found = item->find(name)) return found;
    return nullptr;
}

} // namespace forms
