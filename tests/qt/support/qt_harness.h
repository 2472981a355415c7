#pragma once
#include <QApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <functional>
#include <memory>

#include "mainwindow/frm_main.h"
#include "qt/form_window.h"
#include "qt/grid_view.h"
#include "qt/qt_host.h"
#include "qt/qt_pictures.h"
#include "support/scripted_platform.h"
#include "support/snapshots.h"

namespace qttest {

// The whole program in real Qt windows on temporary folders: the core test
// platform (real files with faults on demand, scripted boxes, printer and
// program end) with the Qt host, Qt pictures and the locale's currency.
class QtHarness {
public:
    QtHarness();
    ~QtHarness();

    qmtest::Harness core; // folders, files, scripted ports, writeIndex/writeCategory
    qtface::QtHost host;
    qtface::QtPictures pictures;
    forms::LocaleCurrency currency{""};
    qm::Platform platform;
    std::unique_ptr<qm::frmMain> main;

    // Makes frmMain, starts it as the program does and waits for its window to be active.
    bool start();
    // start(), then a user's click on entry k of the list.
    bool startAndClick(int entry);
    // These categories written, then startAndClick(entry), with the view laid out.
    bool open(const std::vector<qmtest::Harness::Category>& categories, int entry = 0);
    qm::frmMain& m() { return *main; }

    qtface::FormWindow* window() const { return host.window(main->form); }
    QWidget* topWidget() const { return window()->window(); }
    QWidget* widget(const forms::Control& c) const { return window()->widgetOf(c); }
    template <class W> W* widgetAs(const forms::Control& c) const { return qobject_cast<W*>(widget(c)); }
    qtface::GridView* grid() const { return widgetAs<qtface::GridView>(main->FG1); }
    QListWidget* list() const { return widgetAs<QListWidget>(main->lstCategory); }

    // The list's entries as shown.
    QStringList listTexts() const;
    // A user's click on an entry of the category list, in its viewport.
    void clickListEntry(int index);
    // A user's click on a control's widget (a button), at its middle.
    void click(const forms::Control& c);
    // The entry of the main window's menu with this caption, at any level.
    QAction* menuAction(const QString& caption) const;
    // The widget's top left corner in the client area of the window.
    QPoint inClient(const QWidget* w) const;

    // Runs the posted work of the event loop (syncs, deferred deletes).
    static void settle();
};

using qmtest::kGarage;

// The Qt face over a runtime of its own and no program, for forms a test makes.
struct BareFace {
    BareFace() { rt.setHost(&host); }
    forms::Runtime rt;
    qtface::QtHost host{rt};
    // Shows the form and waits for its window to be active.
    bool show(forms::Form& form);
    template <class W> W* w(const forms::Control& c) { return qobject_cast<W*>(host.window(c.form())->widgetOf(c)); }
    void focus(forms::Control& c) { host.dispatch([&] { c.TrySetFocus(); }); }
};

// Runs f on the modal box of type Box once it is up (a single box).
template <class Box>
void whenShown(std::function<void(Box*)> f) {
    QTimer::singleShot(0, [f] {
        auto* box = qobject_cast<Box*>(QApplication::activeModalWidget());
        if (box) f(box);
    });
}

// The pixel of a twips position at the screen's logical DPI, worked out here
// independently of the face.
int pixels(int twips);

} // namespace qttest
