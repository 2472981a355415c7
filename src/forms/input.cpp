#include "forms/input.h"

#include <algorithm>
#include <string>

#include "forms/controls.h"
#include "forms/form.h"
#include "forms/grid.h"
#include "forms/listbox.h"
#include "forms/menu.h"
#include "forms/runtime.h"

namespace forms::input {

void click(Runtime& rt, Button& b) {
    if (!b.canFocus()) return;
    rt.dispatch([&] { b.TrySetFocus(); });
    rt.dispatch([&] { rt.raise(b.Click); });
}

void toggle(Runtime& rt, CheckBox& box) {
    if (!box.canFocus()) return;
    rt.dispatch([&] { box.TrySetFocus(); });
    rt.dispatch([&] { box.setValue(box.Value() == 0 ? 1 : 0); });
}

void menu(Runtime& rt, MenuItem& item) {
    if (!item.Enabled || !item.Visible || item.isSeparator()) return;
    rt.dispatch([&] { rt.raise(item.Click); });
}

void focus(Runtime& rt, Control& c) {
    rt.dispatch([&] { c.TrySetFocus(); });
}

void tab(Runtime& rt, Form& form, bool backwards) {
    Control* target = nullptr;
    rt.dispatch([&] {
        auto order = form.tabOrder();
        if (order.empty()) return;
        Control* from = rt.focused();
        const std::size_t n = order.size();
        auto at = [&](const Control* c) { return std::find(order.begin(), order.end(), c); };
        // The cell editor is the grid's: Tab goes on from the grid's place.
        if (from && at(from) == order.end() && from->StandsFor()) from = from->StandsFor();
        std::size_t next = backwards ? n - 1 : 0;
        if (auto i = at(from); i != order.end()) {
            const std::size_t k = static_cast<std::size_t>(i - order.begin());
            next = backwards ? (k + n - 1) % n : (k + 1) % n;
        } else if (from && &from->form() == &form) {
            // From a control that is no tab stop, go on from its place in the tab order.
            if (backwards) {
                for (std::size_t k = n; k-- > 0;)
                    if (order[k]->TabIndex() < from->TabIndex()) { next = k; break; }
            } else {
                for (std::size_t k = 0; k < n; ++k)
                    if (order[k]->TabIndex() > from->TabIndex()) { next = k; break; }
            }
        }
        target = order[next];
        target->TrySetFocus();
    });
    // The user tabbed to this control: if its GotFocus passed the focus on (the
    // list's walk ends in the cell editor), it comes back, but not from the
    // control's own editor.
    Control* now = rt.focused();
    if (target && now != target && !(now && now->StandsFor() == target) && target->canFocus()) rt.returnFocus(target);
}

void toggleEntry(Runtime& rt, ListBox& list, int index) {
    if (!list.CheckBoxes || !list.canFocus() || index < 0 || index >= list.ListCount()) return;
    rt.dispatch([&] {
        list.TrySetFocus();
        list.setChecked(index, !list.Checked(index));
    });
}

void selectEntry(Runtime& rt, ListBox& list, int index) {
    if (!list.canFocus() || index < 0 || index >= list.ListCount()) return;
    const std::string entry = list.List(index);
    rt.dispatch([&] { list.TrySetFocus(); });
    // The handlers of the focus gain may have changed the list (entries come
    // in ahead of this one, or it went): the entry the user pointed at is
    // found again by its text.
    if (index >= list.ListCount() || list.List(index) != entry) {
        const auto& items = list.items();
        const auto at = std::find(items.begin(), items.end(), entry);
        if (at == items.end()) return;
        index = static_cast<int>(at - items.begin());
    }
    rt.dispatch([&] { list.setSelected(index); });
}

void doubleClickEntry(Runtime& rt, ListBox& list, int index) {
    selectEntry(rt, list, index);
    if (list.ListIndex() >= 0) rt.dispatch([&] { rt.raise(list.DblClick); });
}

void listKey(Runtime& rt, ListBox& list, int keyCode, char32_t ch, int page) {
    const int n = list.ListCount(), i = list.ListIndex();
    if (n == 0) return;
    if (keyCode == key::Space && list.CheckBoxes) return toggleEntry(rt, list, std::max(i, 0));
    page = std::max(1, page);
    int target = i;
    switch (keyCode) {
    case key::Up: target = std::max(0, i - 1); break;
    case key::Down: target = std::min(n - 1, i + 1); break;
    case key::Home: target = 0; break;
    case key::End: target = n - 1; break;
    case key::PageUp: target = std::max(0, i - page); break;
    case key::PageDown: target = std::min(n - 1, std::max(0, i) + page); break;
    default:
        if (ch >= 0x20) target = list.nextStartingWith(ch, i);
        break;
    }
    if (target != i && target >= 0) selectEntry(rt, list, target);
}

bool cancelOrDefault(Runtime& rt, Form& form, bool enter) {
    for (Control* c : form.controls()) {
        if (c->kind() != Kind::Button || !c->canFocus()) continue;
        auto* b = static_cast<Button*>(c);
        if (enter ? b->Default : b->Cancel) {
            rt.dispatch([&] { rt.raise(b->Click); });
            return true;
        }
    }
    // Esc leaves a small window as its own close does (a dialog without a Cancel button).
    if (enter || !form.Dialog || !form.Visible()) return false;
    closeWindow(rt, form);
    return true;
}

void key(Runtime& rt, TextBox& box, int keyCode, int shift, char32_t ch) {
    if (!box.canFocus()) return;
    rt.dispatch([&] {
        int code = keyCode;
        // Text with no key of its own (an input method's) has no KeyDown.
        if (code != 0 && box.KeyDown) rt.raise([&] { box.KeyDown(code, shift); });
        if (ch != 0) {
            // The character belongs to the box that saw the key go down, even if
            // KeyDown has moved the focus away.
            int c = static_cast<int>(ch);
            if (box.KeyPress) rt.raise([&] { box.KeyPress(c); });
            if (c != 0) box.applyOwnChar(static_cast<char32_t>(c));
        } else if (code != 0) {
            box.applyOwnKey(code);
        }
    });
}

void text(Runtime& rt, TextBox& box, const std::u32string& chars) {
    for (char32_t ch : chars) key(rt, box, 0, 0, ch);
}

void paste(Runtime& rt, TextBox& box, const std::string& utf8) {
    if (!box.canFocus()) return;
    rt.dispatch([&] { box.applyInsert(utf8); });
}

void clickText(Runtime& rt, TextBox& box, int caret) {
    if (!box.canFocus()) return;
    rt.dispatch([&] {
        box.TrySetFocus();
        box.placeCaret(caret);
    });
}

bool gridKeyDown(Runtime& rt, Grid& grid, int keyCode, int shift) {
    if (!grid.canFocus() || !grid.KeyDown) return true;
    rt.dispatch([&] {
        int code = keyCode;
        rt.raise([&] { grid.KeyDown(code, shift); });
    });
    return grid.hasFocus();
}

void gridKey(Runtime& rt, Grid& grid, int keyCode, char32_t ch) {
    if (!grid.canFocus()) return;
    rt.dispatch([&] {
        int r = grid.Row(), c = grid.Col();
        switch (keyCode) {
        case key::Up: --r; break;
        case key::Down: ++r; break;
        case key::Left: --c; break;
        case key::Right: ++c; break;
        case key::Home: c = grid.FixedCols(); break;
        case key::End: c = grid.Cols() - 1; break;
        default: break;
        }
        if (r != grid.Row() || c != grid.Col()) {
            if (r >= grid.FixedRows() && r < grid.Rows() && c >= grid.FixedCols() && c < grid.Cols()) {
                grid.userClickCell(r, c);
                (void)grid.CellTop(); // the grid keeps its current cell in view
            }
            return;
        }
        if (ch != 0 && grid.KeyPress) {
            int code = static_cast<int>(ch);
            rt.raise([&] { grid.KeyPress(code); });
        }
    });
}

void clickCell(Runtime& rt, Grid& grid, int row, int col) {
    if (!grid.canFocus()) return;
    rt.dispatch([&] {
        grid.TrySetFocus();
        grid.userClickCell(row, col);
        rt.raise(grid.Click);
    });
}

void closeWindow(Runtime& rt, Form& form) {
    rt.dispatch([&] {
        if (form.CloseRequested) rt.raise(form.CloseRequested);
        else form.setVisible(false);
    });
}

void scrollGrid(Runtime& rt, Grid& grid, int topRow, int leftCol) {
    rt.dispatch([&] { grid.userScrollTo(topRow, leftCol); });
}

} // namespace forms::input
