#pragma once
#include <QListWidget>
#include <QPoint>
#include <QWidget>
#include <memory>

#include "forms/locale_currency.h"
#include "mainwindow/frm_main.h"
#include "qt/form_window.h"
#include "qt/grid_view.h"
#include "qt/qt_host.h"
#include "qt/qt_pictures.h"
#include "support/scripted_platform.h"

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
    qm::frmMain& m() { return *main; }

    qtface::FormWindow* window() const { return host.window(main->form); }
    QWidget* topWidget() const { return window()->window(); }
    QWidget* widget(const forms::Control& c) const { return window()->widgetOf(c); }
    template <class W> W* widgetAs(const forms::Control& c) const { return qobject_cast<W*>(widget(c)); }
    qtface::GridView* grid() const { return widgetAs<qtface::GridView>(main->FG1); }
    QListWidget* list() const { return widgetAs<QListWidget>(main->lstCategory); }

    // A user's click on an entry of the category list, in its viewport.
    void clickListEntry(int index);
    // A user's click on a control's widget (a button), at its middle.
    void click(const forms::Control& c);
    // The widget's top left corner in the client area of the window.
    QPoint inClient(const QWidget* w) const;

    // Runs the posted work of the event loop (syncs, deferred deletes).
    static void settle();
};

// n items for a category file: "Item i", cost i, value i % 7, ..., "SN" i.
std::vector<std::vector<std::string>> itemRows(int n);

// The pixel of a twips position at the screen's logical DPI, worked out here
// independently of the face.
int pixels(int twips);

} // namespace qttest
