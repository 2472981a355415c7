#include "qt/input_router.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyle>
#include <QStyleOptionViewItem>
#include <QWheelEvent>
#include <algorithm>

#include "forms/controls.h"
#include "forms/form.h"
#include "forms/grid.h"
#include "forms/input.h"
#include "forms/listbox.h"
#include "qt/form_window.h"
#include "qt/grid_view.h"
#include "qt/key_codes.h"
#include "qt/menu_face.h"
#include "qt/text_box_input.h"
#include "qt/view_sync.h"

namespace qtface {

using forms::Kind;

namespace {

// Whether a point of the list's viewport lies in the tick box of the entry there.
bool inCheckIndicator(QListWidget& w, const QModelIndex& index, QPoint at) {
    QStyleOptionViewItem opt;
    opt.initFrom(w.viewport());
    opt.rect = w.visualRect(index);
    opt.features |= QStyleOptionViewItem::HasCheckIndicator;
    const QRect box = w.style()->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &opt, &w);
    return box.adjusted(-2, -2, 2, 2).contains(at);
}

} // namespace

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
            if (!gone()) forms::input::scrollGrid(host_.runtime(), grid, top, left);
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
    case QEvent::Wheel:
        return c.kind() == Kind::TextBox && wheelBeneath(*b.widget(), static_cast<QWheelEvent&>(*event));
    default:
        return false;
    }
}

// A single-line text box has nothing to scroll: the wheel turned over one that
// lies over a scrolling control (an editor over its grid) scrolls that control,
// as it would a hand's breadth away.
bool InputRouter::wheelBeneath(QWidget& box, QWheelEvent& e) {
    QWidget* parent = box.parentWidget();
    if (!parent) return false;
    const QPoint inParent = box.mapToParent(e.position().toPoint());
    for (QObject* o : parent->children()) {
        auto* area = qobject_cast<QAbstractScrollArea*>(o);
        if (!area || area == &box || !area->isVisible() || !area->geometry().contains(inParent)) continue;
        QWidget* vp = area->viewport();
        const QPointF at = vp->mapFrom(parent, inParent);
        QWheelEvent turned(at, e.globalPosition(), e.pixelDelta(), e.angleDelta(), e.buttons(), e.modifiers(), e.phase(),
                           e.inverted(), e.source());
        QCoreApplication::sendEvent(vp, &turned);
        return true;
    }
    return false;
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
    if (((enter && f->kind() != Kind::Button) || e.key() == Qt::Key_Escape) &&
        forms::input::cancelOrDefault(host_.runtime(), form, enter))
        return true;

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

void InputRouter::tab(bool forward) { forms::input::tab(host_.runtime(), window_.form(), !forward); }

bool InputRouter::listKey(forms::Control& c, QKeyEvent& e) {
    auto& list = static_cast<forms::ListBox&>(c);
    // A page is as many entries as the list shows, less one.
    int page = 1;
    if (auto* w = qobject_cast<QListWidget*>(window_.widgetOf(c))) {
        int rowH = w->sizeHintForRow(0);
        if (rowH > 0) page = std::max(1, w->viewport()->height() / rowH - 1);
    }
    const KeyStroke k = keyStroke(e);
    const bool typed = !(e.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) && k.chars.size() == 1;
    forms::input::listKey(host_.runtime(), list, k.keyCode, typed ? k.chars.front() : 0, page);
    return true;
}

bool InputRouter::gridKey(forms::Control& c, QKeyEvent& e) {
    auto& grid = static_cast<forms::Grid&>(c);
    const KeyStroke k = keyStroke(e);
    if (!forms::input::gridKeyDown(host_.runtime(), grid, k.keyCode, k.shift)) {
        // KeyDown handed the key on, to an editor it opened.
        forms::Control* f = host_.runtime().focused();
        if (f && f->kind() == Kind::TextBox && &f->form() == &window_.form() && f->canFocus())
            keyIntoTextBox(host_, static_cast<forms::TextBox&>(*f), e);
        return true;
    }
    if (k.chars.empty()) {
        if (k.keyCode != 0) forms::input::gridKey(host_.runtime(), grid, k.keyCode, 0);
        return true;
    }
    for (char32_t ch : k.chars) forms::input::gridKey(host_.runtime(), grid, 0, ch);
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
        auto& list = static_cast<forms::ListBox&>(c);
        if (entry >= 0 && list.CheckBoxes && inCheckIndicator(*w, hit, at)) forms::input::toggleEntry(host_.runtime(), list, entry);
        else if (entry >= 0 && ev.type() == QEvent::MouseButtonDblClick) forms::input::doubleClickEntry(host_.runtime(), list, entry);
        else if (entry >= 0) forms::input::selectEntry(host_.runtime(), list, entry);
        else forms::input::focus(host_.runtime(), list);
        return true;
    }
    case Kind::Grid: {
        if (!(press && left)) return true;
        auto* view = static_cast<GridView*>(b.widget());
        int r = -1, col = -1;
        const bool hit = watched == view->viewport() && view->cellAt(at, r, col);
        auto& grid = static_cast<forms::Grid&>(c);
        if (hit) forms::input::clickCell(host_.runtime(), grid, r, col);
        else forms::input::focus(host_.runtime(), grid);
        return true;
    }
    case Kind::CheckBox:
        if (ev.type() == QEvent::MouseButtonRelease && left && b.widget()->rect().contains(at)) toggleCheckBox(c);
        return true;
    case Kind::Browser:
        if (press && !c.hasFocus()) forms::input::focus(host_.runtime(), c);
        return false;
    default:
        return false; // buttons press and release by themselves and report clicked
    }
}

void InputRouter::clickButton(forms::Control& c) { forms::input::click(host_.runtime(), static_cast<forms::Button&>(c)); }

void InputRouter::toggleCheckBox(forms::Control& c) {
    forms::input::toggle(host_.runtime(), static_cast<forms::CheckBox&>(c));
}

} // namespace qtface
