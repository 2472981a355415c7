// The main window as the face builds it: where its controls stand, its menu
// and shortcuts, its border, and what the first window shows.
#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

#include "support/qt_harness.h"

using qttest::pixels;
using qttest::QtHarness;

class WindowTest : public QObject {
    Q_OBJECT
private slots:
    void firstWindowShowsListAndExit();
    void controlsStandWhereTheLayoutPutsThem();
    void menuHasEveryEntryWithItsShortcut();
    void windowHasFixedSizeAndNoControlBox();
    void fontsAreAskedForByName();
};

void WindowTest::firstWindowShowsListAndExit() {
    QtHarness h;
    h.core.writeIndex({"Tools", "Books", "apples"});
    QVERIFY(h.start());
    auto& m = h.m();

    QListWidget* list = h.list();
    QVERIFY(list->isVisible());
    QCOMPARE(list->count(), 3);
    QCOMPARE(list->item(0)->text(), QString("apples"));
    QCOMPARE(list->item(1)->text(), QString("Books"));
    QCOMPARE(list->item(2)->text(), QString("Tools"));
    QVERIFY(list->selectedItems().isEmpty());

    auto* exit = h.widgetAs<QPushButton>(m.cmdExit);
    QVERIFY(exit->isVisible());
    QCOMPARE(exit->text(), QString("E&xit"));

    QVERIFY(!h.grid()->isVisible());
    QVERIFY(!h.widget(m.T1)->isVisible());
    QVERIFY(!h.widget(m.txtLoading)->isVisible());
    QCOMPARE(h.widgetAs<QLabel>(m.lblCategory)->text(), QString());
    QCOMPARE(h.topWidget()->windowTitle(), QString("Quillmere"));
    // The first control in the tab order holds the focus, in the runtime and on the screen.
    QCOMPARE(h.core.runtime.focused(), &m.cmdAddCategory);
    QCOMPARE(QApplication::focusWidget(), h.widget(m.cmdAddCategory));
}

void WindowTest::controlsStandWhereTheLayoutPutsThem() {
    QtHarness h;
    QVERIFY(h.start());
    auto& m = h.m();
    QWidget* client = h.window()->client();
    QCOMPARE(client->size(), QSize(pixels(11025), pixels(7200)));

    struct Expect {
        const forms::Control* c;
        int left, top, width, height; // twips in the client area
    };
    // Frames at their places, and controls inside them measured from the client area.
    const Expect expected[] = {
        {&m.fraCategory, 120, 120, 10815, 1815},
        {&m.fraFlexGrid, 120, 2040, 10815, 4215},
        {&m.fraButtons, 120, 6240, 10815, 855},
        {&m.cmdAddCategory, 120 + 120, 120 + 240, 1575, 495},
        {&m.lstCategory, 120 + 1800, 120 + 240, 2535, 1425},
        {&m.chkPic, 120 + 4680, 120 + 1440, 2415, 255},
        {&m.FG1, 120 + 120, 2040 + 240, 10575, 3255},
        {&m.txtCost, 120 + 3720, 2040 + 3600, 1575, 405},
        {&m.txtValue, 120 + 9120, 2040 + 3600, 1575, 375},
        {&m.cmdExit, 120 + 9240, 6240 + 240, 1455, 495},
    };
    for (const Expect& e : expected) {
        QWidget* w = h.widget(*e.c);
        QVERIFY2(w, e.c->name().c_str());
        const QRect want(QPoint(pixels(e.left), pixels(e.top)),
                         QPoint(pixels(e.left + e.width) - 1, pixels(e.top + e.height) - 1));
        const QRect got(h.inClient(w), w->size());
        if (got != want) qWarning() << e.c->name().c_str() << "at" << got << "wanted" << want;
        QCOMPARE(got, want);
    }
    // Containers hold their controls: the list is a child of its frame's widget.
    QCOMPARE(h.widget(m.lstCategory)->parentWidget(), h.widget(m.fraCategory));
    QCOMPARE(h.widget(m.T1)->parentWidget(), h.widget(m.fraFlexGrid));
}

namespace {

struct MenuLine {
    QString caption; // "-" for a separator
    QString shortcut;
    int level;       // 0 bar, 1 in a bar menu, 2 in a submenu
};

void walk(const QList<QAction*>& actions, int level, QList<MenuLine>& out) {
    for (QAction* a : actions) {
        if (a->isSeparator()) {
            out.push_back({"-", {}, level});
            continue;
        }
        out.push_back({a->text(), a->shortcut().toString(QKeySequence::PortableText), level});
        if (a->menu()) walk(a->menu()->actions(), level + 1, out);
    }
}

} // namespace

void WindowTest::menuHasEveryEntryWithItsShortcut() {
    QtHarness h;
    QVERIFY(h.start());
    auto* bar = h.topWidget()->findChild<QMenuBar*>();
    QVERIFY(bar);
    QVERIFY(bar->isVisible());
    QList<MenuLine> lines;
    walk(bar->actions(), 0, lines);
    const QList<MenuLine> want = {
        {"&File", "", 0},
        {"&Save to Floppy", "Ctrl+S", 1},
        {"&Load from Floppy", "Ctrl+L", 1},
        {"-", "", 1},
        {"Print", "Ctrl+P", 1},
        {"-", "", 1},
        {"Exit", "Ctrl+X", 1},
        {"&Edit", "", 0},
        {"&Categories", "", 1},
        {"Add Category", "F1", 2},
        {"Delete Category", "Shift+F1", 2},
        {"Rename Category", "Ctrl+F1", 2},
        {"-", "", 2},
        {"Delete All Categories", "", 2},
        {"&Items", "", 1},
        {"Add Item", "F2", 2},
        {"Delete Item", "Shift+F2", 2},
        {"Rename Item", "Ctrl+F2", 2},
        {"-", "", 2},
        {"Delete All Items", "Ctrl+Shift+F2", 2},
        {"-", "", 1},
        {"Properties", "Ctrl+R", 1},
        {"&Help", "", 0},
        {"Contents", "Ctrl+H", 1},
        {"-", "", 1},
        {"Contact Me", "Ctrl+C", 1},
        {"-", "", 1},
        {"About Quillmere", "Ctrl+A", 1},
    };
    QCOMPARE(lines.size(), want.size());
    for (int i = 0; i < want.size(); ++i) {
        QCOMPARE(lines[i].caption, want[i].caption);
        QCOMPARE(lines[i].shortcut, want[i].shortcut);
        QCOMPARE(lines[i].level, want[i].level);
    }
}

void WindowTest::windowHasFixedSizeAndNoControlBox() {
    QtHarness h;
    QVERIFY(h.start());
    QWidget* top = h.topWidget();
    const Qt::WindowFlags flags = top->windowFlags();
    QVERIFY(!(flags & Qt::WindowCloseButtonHint));
    QVERIFY(!(flags & Qt::WindowMinimizeButtonHint));
    QVERIFY(!(flags & Qt::WindowMaximizeButtonHint));
    QVERIFY(!(flags & Qt::WindowSystemMenuHint));
    QCOMPARE(top->minimumSize(), top->maximumSize());
    // Centred on the screen.
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    QVERIFY(qAbs(top->geometry().center().x() - screen.center().x()) <= 2);
}

void WindowTest::fontsAreAskedForByName() {
    QtHarness h;
    QVERIFY(h.start());
    auto& m = h.m();
    // "Comic Sans MS" keeps its name, so fontconfig's look-alike takes its place.
    QCOMPARE(h.grid()->font().families().value(0), QString("Comic Sans MS"));
    QCOMPARE(h.grid()->font().pointSizeF(), 8.25);
    QCOMPARE(h.widget(m.lblCategory)->font().pointSizeF(), 36.0);
    QCOMPARE(h.widget(m.Label1)->font().pointSizeF(), 12.0);
    // "MS Sans Serif" is the desktop's sans-serif at the same size.
    QFont buttonFont = h.widget(m.cmdExit)->font();
    QCOMPARE(buttonFont.family(), QFontDatabase::systemFont(QFontDatabase::GeneralFont).family());
    QCOMPARE(buttonFont.pointSizeF(), 8.25);
}

QTEST_MAIN(WindowTest)
#include "window_test.moc"
