#include "qt/menu_face.h"

#include <QKeyEvent>
#include <QMenu>

#include "forms/input.h"

namespace qtface {

MenuFace::MenuFace(QtHost& host, forms::MenuItem& root, QWidget* window)
    : host_(host), root_(root), bar_(new QMenuBar(window)) {
    bar_->setNativeMenuBar(false);
    build(root_, bar_);
    refresh();
}

QKeySequence MenuFace::parseShortcut(const std::string& text) {
    return QKeySequence::fromString(QString::fromStdString(text), QKeySequence::PortableText);
}

void MenuFace::build(forms::MenuItem& parent, QWidget* into) {
    for (const auto& child : parent.items()) {
        forms::MenuItem* item = child.get();
        QAction* action = nullptr;
        if (item->isSeparator()) {
            action = new QAction(into);
            action->setSeparator(true);
        } else if (!item->items().empty()) {
            auto* menu = new QMenu(QString::fromStdString(item->Caption), into);
            build(*item, menu);
            // Enabled, Visible and captions announce no change: read them as the menu opens.
            QObject::connect(menu, &QMenu::aboutToShow, menu, [this] { refresh(); });
            action = menu->menuAction();
        } else {
            action = new QAction(QString::fromStdString(item->Caption), into);
            QKeySequence seq = parseShortcut(item->Shortcut);
            // Shown in the menu; the key itself is taken by the window's router,
            // so that text boxes can't claim it first.
            action->setShortcut(seq);
            action->setShortcutContext(Qt::WindowShortcut);
            QObject::connect(action, &QAction::triggered, action, [this, item] { run(*item); });
        }
        into->addAction(action);
        QKeySequence seq = item->isSeparator() ? QKeySequence() : parseShortcut(item->Shortcut);
        entries_.push_back({item, &parent, action, seq.isEmpty() ? QKeyCombination() : seq[0]});
    }
}

bool MenuFace::runnable(const Entry& e) const {
    if (!e.item->Enabled || !e.item->Visible) return false;
    // Every menu above it must be open to the user too.
    for (const Entry& p : entries_)
        if (p.item == e.parent && !runnable(p)) return false;
    return true;
}

forms::MenuItem* MenuFace::entryForKey(const QKeyEvent& ev) const {
    const Qt::KeyboardModifiers mods =
        ev.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    const QKeyCombination pressed(mods, static_cast<Qt::Key>(ev.key()));
    for (const Entry& e : entries_)
        if (e.key.key() != Qt::Key(0) && e.key == pressed && runnable(e)) return e.item;
    return nullptr;
}

void MenuFace::run(forms::MenuItem& item) { forms::input::menu(host_.runtime(), item); }

void MenuFace::refresh() {
    for (const Entry& e : entries_) {
        if (e.item->isSeparator()) {
            e.action->setVisible(e.item->Visible);
            continue;
        }
        const QString caption = QString::fromStdString(e.item->Caption);
        if (e.action->text() != caption) e.action->setText(caption);
        e.action->setEnabled(e.item->Enabled);
        e.action->setVisible(e.item->Visible);
    }
}

} // namespace qtface
