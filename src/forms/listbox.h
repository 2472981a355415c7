#pragma once
#include <functional>
#include <string>
#include <vector>

#include "forms/control.h"

namespace forms {

// A list of texts with at most one selected entry. Indexes are from 0, -1 for none.
class ListBox : public Control {
public:
    static constexpr int kMaxEntries = 32767; // indexes stay signed 16-bit

    ListBox(Form& form, Control* container, std::string name);

    bool Sorted = false;
    // Each entry shows a tick box (Space or a click on the box turns it);
    // entries come in ticked.
    bool CheckBoxes = false;

    int ListCount() const { return static_cast<int>(items_.size()); }
    int ListIndex() const { return index_; }
    const std::string& List(int i) const;
    const std::vector<std::string>& items() const { return items_; }

    // Adds at the sorted place (or at the end); the selected entry stays selected. No Click.
    void AddItem(const std::string& text);
    // Removing the selected entry leaves none selected. No Click.
    void RemoveItem(int index);
    void Clear();

    // Selects entry i; if the selection changes, Click runs to its end before this returns.
    void setSelected(int i);
    // The selected entry's text, or "" with none.
    std::string Text() const;
    // Selects the entry with exactly this text; a text that matches none changes nothing.
    void setText(const std::string& text);

    bool Checked(int i) const;
    void setChecked(int i, bool on);
    // The first entry after entry `after`, round from the top, whose first
    // letter is this one in either case; `after` itself if none.
    int nextStartingWith(char32_t letter, int after) const;

    // The order of a sorted list: letter case ignored, ties by exact text.
    static bool sortsBefore(const std::string& a, const std::string& b);

    std::function<void()> Click;
    // A double-click on an entry, after the click that selected it.
    std::function<void()> DblClick;

private:
    std::vector<std::string> items_;
    std::vector<bool> checked_; // beside items_
    int index_ = -1;
};

} // namespace forms
