#include "qt/input_router.h"

#include <QAbstractScrollArea>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <algorithm>

#include "forms/controls.h"
#include "forms/form.h"
#include "forms/grid.h"
#include "forms/listbox.h"
#include "qt/form_window.h"
#include "qt/grid_view.h"
#include "qt/key_codes.h"
#include "qt/menu_face.h"
#include "qt/text_box_input.h"
#include "qt/view_sync.h"

namespace qtface {

using forms::Kind;

InputRouter::InputRouter(QtHost& host, FormWindow& window) : QObject(nullptr), host_(host), window_(window) {}

bool InputRouter::gone() const { return window_.detached(); }

void InputRouter::watch(ControlBinding& b) {
    QWidget* w = b.widget();
    bindings_[w] = &b;
    w->installEventFilter(this);
    if (auto* area = qobject_cast<QAbstractScrollArea*>(w)) {
        bindings_[area->viewport()] = &b;
        area->viewport()->installEventFilter(this);
    }
    forms::Control& c = b.control();
    if (c.kind() == Kind::Button)
        connect(static_cast<QPushButton*>(w), &QPushButton::clicked, this, [this, &c] { clickButton(c); });
    if (c.kind() == Kind::Grid) {
        auto& grid = static_cast<forms::Grid&>(c);
        static_cast<GridView*>(w)->userScrolled = [this, &grid](int top, int left) {
            if (!gone()) host_.dispatch([&] { grid.userScrollTo(top, left); });
        };
    }
}

void InputRouter::watchWindow(QWidget* w) { w->installEventFilter(this); }

bool InputRouter::eventFilter(QObject* watched, QEvent* event) {
    if (gone()) return false;
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        return shortcutOverride(static_cast<QKeyEvent&>(*event));
    case QEvent::KeyPress:
        return key(static_cast<QKeyEvent&>(*event));
    case QEvent::InputMethod: {
        forms::Control* f = host_.runtime().focused();
        if (!f || f->kind() != Kind::TextBox || &f->form() != &window_.form()) return false;
        const QString commit = static_cast<QInputMethodEvent*>(event)->commitString();
        if (!commit.isEmpty()) commitIntoTextBox(host_, static_cast<forms::TextBox&>(*f), commit);
        return true;
    }
    default:
        break;
    }
    auto it = bindings_.find(watched);
    if (it == bindings_.end()) return false;
    ControlBinding& b = *it->second;
    forms::Control& c = b.control();
    switch (event->type()) {
    case QEvent::Shortcut:
        // A caption's access key (Alt and the letter after "&").
        if (c.kind() == Kind::Button) clickButton(c);
        else if (c.kind() == Kind::CheckBox) toggleCheckBox(c);
        return true;
    case QEvent::MouseButtonPress: case QEvent::MouseButtonRelease: case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        return mouse(b, watched, *event);
    case QEvent::ContextMenu:
        if (c.kind() == Kind::TextBox) {
            auto& ce = static_cast<QContextMenuEvent&>(*event);
            contextMenuOfTextBox(host_, static_cast<forms::TextBox&>(c), *static_cast<QLineEdit*>(b.widget()), ce.globalPos());
            return true;
        }
        return c.kind() != Kind::Browser;
    case QEvent::DragEnter: case QEvent::DragMove: case QEvent::Drop:
        return c.kind() == Kind::TextBox;
    default:
        return false;
    }
}

bool InputRouter::shortcutOverride(QKeyEvent& e) {
    // A menu key is taken as a plain key press, which key() then runs: no
    // widget (a text box's Ctrl+X, Ctrl+C, Ctrl+A) gets it first.
    if (menu_ && menu_->entryForKey(e)) {
        e.accept();
        return true;
    }
    return false;
}

bool InputRouter::key(QKeyEvent& e) {
    if (menu_) {
        if (forms::MenuItem* item = menu_->entryForKey(e)) {
            menu_->run(*item);
            return true;
        }
    }
    const bool ctrlOrAlt = e.modifiers() & (Qt::ControlModifier | Qt::AltModifier);
    if ((e.key() == Qt::Key_Tab || e.key() == Qt::Key_Backtab) && !ctrlOrAlt) {
        tab(e.key() == Qt::Key_Tab && !(e.modifiers() & Qt::ShiftModifier));
        return true;
    }
    forms::Control* f = host_.runtime().focused();
    forms::Form& form = window_.form();
    if (!f || &f->form() != &form) {
        // The focus is in another window: this one takes it, the key is spent.
        window_.takeFocus();
        return true;
    }
    // A control that holds the focus while hidden gets no keys: nothing may be
    // typed where the user can't see it.
    if (!f->canFocus()) return true;

    const bool enter = e.key() == Qt::Key_Return || e.key() == Qt::Key_Enter;
    if ((enter && f->kind() != Kind::Button) || e.key() == Qt::Key_Escape) {
        for (forms::Control* c : form.controls()) {
            if (c->kind() != Kind::Button || !c->canFocus()) continue;
            auto* b = static_cast<forms::Button*>(c);
            if (enter ? b->Default : b->Cancel) {
                host_.dispatch([&] { host_.runtime().raise(b->Click); });
                return true;
            }
        }
    }

    switch (f->kind()) {
    case Kind::TextBox:
        keyIntoTextBox(host_, static_cast<forms::TextBox&>(*f), e);
        return true;
    case Kind::ListBox:
        return listKey(*f, e);
    case Kind::Grid:
        return gridKey(*f, e);
    case Kind::Button:
        if (enter || e.key() == Qt::Key_Space) clickButton(*f);
        return true;
    case Kind::CheckBox:
        if (e.key() == Qt::Key_Space) toggleCheckBox(*f);
        return true;
    case Kind::Browser:
        return false; // its own scrolling and links
    default:
        return true;
    }
}

void InputRouter::tab(bool forward) {
    forms::Form& form = window_.form();
    const std::vector<forms::Control*> order = form.tabOrder();
    if (order.empty()) return;
    forms::Control* cur = host_.runtime().focused();
    forms::Control* next = nullptr;
    auto it = std::find(order.begin(), order.end(), cur);
    if (it != order.end()) {
        if (forward) next = (it + 1 == order.end()) ? order.front() : *(it + 1);
        else next = (it == order.begin()) ? order.back() : *(it - 1);
    } else if (cur && &cur->form() == &form) {
        // A control out of the tab order (the cell editor): go on from its tab index.
        if (forward) {
            auto n = std::find_if(order.begin(), order.end(), [&](forms::Control* c) { return c->TabIndex() > cur->TabIndex(); });
            next = n != order.end() ? *n : order.front();
        } else {
            auto p = std::find_if(order.rbegin(), order.rend(), [&](forms::Control* c) { return c->TabIndex() < cur->TabIndex(); });
            next = p != order.rend() ? *p : order.back();
        }
    } else {
        next = forward ? order.front() : order.back();
    }
    host_.dispatch([next] { next->TrySetFocus(); });
}

bool InputRouter::listKey(forms::Control& c, QKeyEvent& e) {
    auto& list = static_cast<forms::ListBox&>(c);
    const int n = list.ListCount();
    if (n == 0) return true;
    const int i = list.ListIndex();
    int page = 1;
    if (auto* w = qobject_cast<QListWidget*>(window_.widgetOf(c))) {
        int rowH = w->sizeHintForRow(0);
        if (rowH > 0) page = std::max(1, w->viewport()->height() / rowH - 1);
    }
    int target = i;
    switch (e.key()) {
    case Qt::Key_Up: target = i <= 0 ? 0 : i - 1; break;
    case Qt::Key_Down: target = std::min(n - 1, i + 1); break;
    case Qt::Key_Home: target = 0; break;
    case Qt::Key_End: target = n - 1; break;
    case Qt::Key_PageUp: target = std::max(0, i - page); break;
    case Qt::Key_PageDown: target = std::min(n - 1, std::max(0, i) + page); break;
    default: {
        // A letter goes to the next entry that starts with it.
        const QString typed = e.text();
        if (typed.isEmpty() || !typed.at(0).isPrint() || (e.modifiers() & (Qt::ControlModifier | Qt::AltModifier))) return true;
        for (int k = 1; k <= n; ++k) {
            int j = (std::max(i, -1) + k) % n;
            if (QString::fromStdString(list.List(j)).startsWith(typed, Qt::CaseInsensitive)) {
                target = j;
                break;
            }
        }
    }
    }
    if (target != i && target >= 0 && target < n) host_.dispatch([&] { list.setSelected(target); });
    return true;
}

bool InputRouter::gridKey(forms::Control& c, QKeyEvent& e) {
    auto& g = static_cast<forms::Grid&>(c);
    const bool ctrl = e.modifiers() & Qt::ControlModifier;
    int r = g.Row(), col = g.Col();
    int page = 1;
    if (auto* view = qobject_cast<GridView*>(window_.widgetOf(c))) {
        int rowH = host_.twips().px(forms::Grid::kDefaultRowHeight);
        if (rowH > 0) page = std::max(1, view->viewport()->height() / rowH - 2);
    }
    bool move = true;
    switch (e.key()) {
    case Qt::Key_Up: r = std::max(g.FixedRows(), r - 1); break;
    case Qt::Key_Down: r = std::min(g.Rows() - 1, r + 1); break;
    case Qt::Key_Left: col = std::max(g.FixedCols(), col - 1); break;
    case Qt::Key_Right: col = std::min(g.Cols() - 1, col + 1); break;
    case Qt::Key_Home: col = g.FixedCols(); if (ctrl) r = g.FixedRows(); break;
    case Qt::Key_End: col = g.Cols() - 1; if (ctrl) r = g.Rows() - 1; break;
    case Qt::Key_PageUp: r = std::max(g.FixedRows(), r - page); break;
    case Qt::Key_PageDown: r = std::min(g.Rows() - 1, r + page); break;
    default: move = false; break;
    }
    if (move) {
        if (r != g.Row() || col != g.Col())
            host_.dispatch([&] {
                if (r != g.Row()) g.setRow(r);
                if (col != g.Col()) g.setCol(col);
                g.CellTop(); // the grid brings its current cell into view
            });
        return true;
    }
    const KeyStroke k = keyStroke(e);
    if (k.chars.empty()) return true;
    host_.dispatch([&] {
        for (char32_t ch : k.chars) {
            int code = static_cast<int>(ch);
            host_.runtime().raise([&] {
                if (g.KeyPress) g.KeyPress(code);
            });
        }
    });
    return true;
}

bool InputRouter::mouse(ControlBinding& b, QObject* watched, QEvent& ev) {
    auto& me = static_cast<QMouseEvent&>(ev);
    forms::Control& c = b.control();
    const QPoint at = me.position().toPoint();
    const bool press = ev.type() == QEvent::MouseButtonPress || ev.type() == QEvent::MouseButtonDblClick;
    const bool left = me.button() == Qt::LeftButton;
    switch (c.kind()) {
    case Kind::TextBox: {
        auto& box = static_cast<forms::TextBox&>(c);
        auto* edit = static_cast<QLineEdit*>(b.widget());
        if (press && left) dragAnchor_ = pressInTextBox(host_, box, *edit, at);
        else if (ev.type() == QEvent::MouseMove && (me.buttons() & Qt::LeftButton) && dragAnchor_ >= 0 && !gone())
            dragInTextBox(host_, box, *edit, dragAnchor_, at);
        else if (ev.type() == QEvent::MouseButtonRelease) dragAnchor_ = -1;
        return true;
    }
    case Kind::ListBox: {
        if (!(press && left)) return true;
        auto* w = static_cast<QListWidget*>(b.widget());
        // The entry under the mouse at the press, before anything moves.
        const QModelIndex hit = watched == w->viewport() ? w->indexAt(at) : QModelIndex();
        const int entry = hit.isValid() ? hit.row() : -1;
        if (!c.hasFocus()) host_.dispatch([&] { c.TrySetFocus(); });
        if (gone()) return true;
        auto& list = static_cast<forms::ListBox&>(c);
        if (entry >= 0) host_.dispatch([&] {
            if (entry < list.ListCount()) list.setSelected(entry);
        });
        return true;
    }
    case Kind::Grid: {
        if (!(press && left)) return true;
        auto* view = static_cast<GridView*>(b.widget());
        int r = -1, col = -1;
        const bool hit = watched == view->viewport() && view->cellAt(at, r, col);
        auto& grid = static_cast<forms::Grid&>(c);
        host_.dispatch([&] {
            grid.TrySetFocus();
            if (hit) grid.userClickCell(r, col);
        });
        return true;
    }
    case Kind::CheckBox:
        if (ev.type() == QEvent::MouseButtonRelease && left && b.widget()->rect().contains(at)) toggleCheckBox(c);
        return true;
    case Kind::Browser:
        if (press && !c.hasFocus()) host_.dispatch([&] { c.TrySetFocus(); });
        return false;
    default:
        return false; // buttons press and release by themselves and report clicked
    }
}

void InputRouter::clickButton(forms::Control& c) {
    auto& button = static_cast<forms::Button&>(c);
    host_.dispatch([&] { button.TrySetFocus(); });
    if (gone()) return;
    host_.dispatch([&] { host_.runtime().raise(button.Click); });
}

void InputRouter::toggleCheckBox(forms::Control& c) {
    auto& box = static_cast<forms::CheckBox&>(c);
    host_.dispatch([&] { box.TrySetFocus(); });
    if (gone()) return;
    host_.dispatch([&] { box.setValue(box.Value() == 1 ? 0 : 1); });
}

} // namespace qtface
