#pragma once
#include <QKeyCombination>
#include <QMenuBar>
#include <vector>

#include "forms/menu.h"
#include "qt/qt_host.h"

namespace qtface {

// A form's menu bar: captions with their "&" access keys, separators "-",
// submenus, and the shortcut of each entry. A shortcut belongs to the menu in
// every widget of the window, text boxes included, so the window's input router
// asks entryForKey before a key goes anywhere else.
class MenuFace {
public:
    MenuFace(QtHost& host, forms::MenuItem& root, QWidget* window);

    QMenuBar* bar() const { return bar_; }
    bool empty() const { return entries_.empty(); }

    // The entry whose shortcut this key is, if it can run now.
    forms::MenuItem* entryForKey(const QKeyEvent& e) const;
    // Runs the entry's Click as one user input.
    void run(forms::MenuItem& item);
    // Captions, Enabled and Visible as the model holds them now.
    void refresh();

    static QKeySequence parseShortcut(const std::string& text);

private:
    struct Entry {
        forms::MenuItem* item;
        forms::MenuItem* parent;
        QAction* action;
        QKeyCombination key;
    };
    void build(forms::MenuItem& parent, QWidget* into);
    bool runnable(const Entry& e) const;

    QtHost& host_;
    forms::MenuItem& root_;
    QMenuBar* bar_;
    std::vector<Entry> entries_;
};

} // namespace qtface
