#pragma once
#include <QApplication>
#include <QListWidget>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <deque>
#include <functional>
#include <memory>

#include "mainwindow/frm_main.h"
#include "qt/form_window.h"
#include "qt/grid_view.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_host.h"
#include "qt/qt_pictures.h"
#include "qt/qt_printer.h"
#include "support/scripted_platform.h"

namespace qttest {

// Ports that are Qt's own in place of the scripted ones: the real message and
// input boxes (answered with ModalBoxes), the real printer (its PDF opened by
// nobody; the path is kept in openedPdfs).
struct RealPorts {
    bool dialogs = false;
    bool printer = false;
};

// The whole program in real Qt windows on temporary folders: the core test
// platform (real files with faults on demand, scripted boxes, printer and
// program end) with the Qt host, Qt pictures and the locale's currency.
class QtHarness {
public:
    explicit QtHarness(RealPorts real = {});
    ~QtHarness();

    qmtest::Harness core; // folders, files, scripted ports, writeIndex/writeCategory
    qtface::QtHost host;
    qtface::QtPictures pictures;
    forms::LocaleCurrency currency{""};
    qtface::QtDialogs qtDialogs{[this] { host.sync(); }};
    std::vector<QString> openedPdfs;
    qtface::QtPrinter qtPrinter{"Quillmere", [this](const QString& pdf) { openedPdfs.push_back(pdf); }};
    qm::Platform platform;
    std::unique_ptr<qm::frmMain> main;

    // Makes frmMain, starts it as the program does and waits for its window to be active.
    bool start();
    // start(), then a user's click on entry k of the list.
    bool startAndClick(int entry);
    qm::frmMain& m() { return *main; }

    qtface::FormWindow* window() const { return host.window(main->form); }
    QWidget* topWidget() const { return window()->window(); }
    QWidget* widget(const forms::Control& c) const { return window()->widgetOf(c); }
    template <class W> W* widgetAs(const forms::Control& c) const { return qobject_cast<W*>(widget(c)); }
    qtface::GridView* grid() const { return widgetAs<qtface::GridView>(main->FG1); }
    QListWidget* list() const { return widgetAs<QListWidget>(main->lstCategory); }

    // The list's entries as shown, and the one selected entry ("" for none).
    QStringList listTexts() const;
    QString selectedText() const;
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

// The Qt face over a runtime of its own and no program, for forms a test makes.
struct BareFace {
    BareFace() { rt.setHost(&host); }
    forms::Runtime rt;
    qtface::QtHost host{rt};
};

// Answers the real modal boxes as a user does, one step for each box as it
// comes up: types into an input box and presses a button. What each box showed
// is kept. A box that comes with no step left is cancelled and counted, so no
// test hangs on it.
class ModalBoxes {
public:
    struct Seen {
        QString title, text; // an input box's text is its prompt
        bool input = false;
    };

    ModalBoxes();
    ~ModalBoxes();

    // The next input box gets this text typed and OK (or Cancel) pressed.
    ModalBoxes& type(const QString& text, bool ok = true);
    // The next message box gets this button pressed.
    ModalBoxes& press(QMessageBox::StandardButton button);

    const std::vector<Seen>& seen() const { return seen_; }
    QStringList texts() const;
    int unexpected() const { return unexpected_; }
    bool done() const { return steps_.empty(); }

private:
    void poll();
    QTimer timer_;
    std::deque<std::function<bool(QWidget*)>> steps_; // false: not the box it answers
    QPointer<QWidget> handled_;
    std::vector<Seen> seen_;
    int unexpected_ = 0;
};

// Runs f on the modal box of type Box once it is up (a single box).
template <class Box>
void whenShown(std::function<void(Box*)> f) {
    QTimer::singleShot(0, [f] {
        auto* box = qobject_cast<Box*>(QApplication::activeModalWidget());
        if (box) f(box);
    });
}

// n items for a category file: "Item i", cost i, value i % 7, ..., "SN" i.
std::vector<std::vector<std::string>> itemRows(int n);

// The pixel of a twips position at the screen's logical DPI, worked out here
// independently of the face.
int pixels(int twips);

} // namespace qttest
