// Typing into the real window: the editor laid over the cell a click chose,
// the keys of its tables, Enter's walk to a new item, Esc, what never reaches a
// cell, paste and input methods, and scrolling while editing. Every piece of
// input is a real Qt event.
#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

#include "qt/colors_fonts.h"
#include "support/qt_harness.h"

using qttest::QtHarness;

namespace {

using Rows = std::vector<std::vector<std::string>>;

const Rows kGarage = {{"Drill", "120.50", "80", "Shop", "2001", "2003", "SN1"},
                      {"Saw", "1000", "999.99", "Shop", "2002", "", "SN2"},
                      {"Lathe", "5", "5", "", "", "", "abc"}};

// The main window with "Garage" (the given items) open by a click on its entry,
// and an empty "Kitchen" beside it.
struct Typing {
    QtHarness h;
    bool started = false;

    explicit Typing(const Rows& items = kGarage) {
        h.core.writeCategories({{"Garage", items}, {"Kitchen", {}}});
        if (!h.startAndClick(0)) return;
        QtHarness::settle(); // the view lays out its scroll bars when the loop runs
        started = true;
    }
    qm::frmMain& m() { return h.m(); }
    QLineEdit* t1() { return h.widgetAs<QLineEdit>(m().T1); }
    QString text(const forms::Control& c) { return h.widgetAs<QLineEdit>(c)->text(); }

    QRect cellRect(int r, int c) { return h.grid()->cellRect(r, c); }
    // The editor's rectangle in the grid's viewport.
    QRect editorRect() {
        QWidget* frame = t1()->parentWidget();
        const QPoint viewport = h.grid()->viewport()->mapTo(frame, QPoint(0, 0));
        return QRect(t1()->mapTo(frame, QPoint(0, 0)) - viewport, t1()->size());
    }
    void clickCell(int r, int c) { QTest::mouseClick(h.grid()->viewport(), Qt::LeftButton, {}, cellRect(r, c).center()); }
    // A click in the editor where Qt puts the caret before character n.
    bool clickCaret(int n) {
        QLineEdit* e = t1();
        for (int x = 0; x < e->width(); ++x) {
            const QPoint p(x, e->height() / 2);
            if (e->cursorPositionAt(p) != n) continue;
            QTest::mouseClick(e, Qt::LeftButton, {}, p);
            return m().T1.SelStart() == n && e->cursorPosition() == n;
        }
        return false;
    }
    // Keys go to whichever widget Qt gives the keyboard focus.
    QWidget* focus() { return QApplication::focusWidget() ? QApplication::focusWidget() : h.topWidget(); }
    void key(int k, Qt::KeyboardModifiers mods = {}) { QTest::keyClick(focus(), static_cast<Qt::Key>(k), mods); }
    void type(const QString& s) { QTest::keyClicks(focus(), s); }

    std::string cell(int r, int c) { return std::string(m().FG1.TextMatrix(r, c)); }
    QString shown(int r, int c) { return h.grid()->model()->index(r, c).data().toString(); }

    // Open on the cell: the editor lies exactly over it, holds its text and the
    // keyboard focus, and the grid draws the same text.
    bool editorOn(int r, int c) {
        const bool ok = m().FG1.Row() == r && m().FG1.Col() == c && t1()->isVisible() &&
                        QApplication::focusWidget() == t1() && !cellRect(r, c).isEmpty() && editorRect() == cellRect(r, c) &&
                        t1()->text() == QString::fromStdString(cell(r, c)) && shown(r, c) == t1()->text();
        if (!ok) qWarning() << "cell" << m().FG1.Row() << m().FG1.Col() << t1()->isVisible() << editorRect() << cellRect(r, c) << t1()->text();
        return ok;
    }
    bool caretAtEnd() { return t1()->cursorPosition() == t1()->text().size() && m().T1.SelStart() == m().T1.length(); }
};

void wheel(QtHarness& h, int notches) {
    QWidget* vp = h.grid()->viewport();
    const QPointF at(vp->width() / 2.0, vp->height() / 2.0);
    QWheelEvent e(at, vp->mapToGlobal(at), {}, QPoint(0, 120 * notches), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(vp, &e);
}

// One key in the editor on a cell with the caret at a place: where the editor
// is then, what the cell that was typed in holds, and the caret.
struct KeyCase {
    const char* name;
    int row, col, caret; // caret -1: at the end, where a click leaves it
    Qt::Key key;
    int toRow, toCol;
    const char* typedCell;
    int caretAfter;
};
const int end = -1;
const KeyCase kKeys[] = {
    {"Backspace in the text", 1, 3, 2, Qt::Key_Backspace, 1, 3, "Sop", 1},
    {"Backspace at the start", 1, 3, 0, Qt::Key_Backspace, 1, 3, "Shop", 0},
    {"Delete in the text", 1, 3, 1, Qt::Key_Delete, 1, 3, "Sop", 1},
    {"Delete at the end", 1, 3, end, Qt::Key_Delete, 1, 3, "Shop", 4},
    {"Left inside the text", 1, 3, end, Qt::Key_Left, 1, 3, "Shop", 3},
    {"Left at the start: the cell before", 1, 4, 0, Qt::Key_Left, 1, 3, "2001", 4},
    {"Left at the start of column 1: the row above", 2, 1, 0, Qt::Key_Left, 1, 6, "1000", 3},
    {"Left at the first cell: nowhere", 1, 1, 0, Qt::Key_Left, 1, 1, "120.50", 0},
    {"Right inside the text", 1, 3, 1, Qt::Key_Right, 1, 3, "Shop", 2},
    {"Right at the end: the cell after", 1, 3, end, Qt::Key_Right, 1, 4, "Shop", 4},
    {"Right at the end of the last column: the row below", 1, 6, end, Qt::Key_Right, 2, 1, "SN1", 4},
    {"Right at the end of the last cell: nowhere", 3, 6, end, Qt::Key_Right, 3, 6, "abc", 3},
    {"Up with the caret inside", 2, 3, 1, Qt::Key_Up, 1, 3, "Shop", 4},
    {"Up in row 1: nowhere", 1, 2, end, Qt::Key_Up, 1, 2, "80", 0},
    {"Down with the caret inside", 1, 3, 1, Qt::Key_Down, 2, 3, "Shop", 4},
    {"Down in the last row: no new row", 3, 2, end, Qt::Key_Down, 3, 2, "5", 1},
    {"Home: the caret only", 1, 3, end, Qt::Key_Home, 1, 3, "Shop", 0},
    {"End: the caret only", 1, 3, 1, Qt::Key_End, 1, 3, "Shop", 4},
};

} // namespace

// Each test has the window with Garage open (init), unless it opens its own.
class TypingTest : public QObject {
    Q_OBJECT
    std::unique_ptr<Typing> t;
private slots:
    void init() {
        t = std::make_unique<Typing>();
        QVERIFY(t->started);
    }
    void cleanup() { t.reset(); }

    void aClickLaysTheEditorOverThatCell() {
        // The switch ends with the editor open on the last cell of the last row.
        QVERIFY(t->editorOn(3, 6));
        QVERIFY(t->caretAtEnd());
        const QColor green = qtface::toQColor(t->m().T1.BackColor(), QApplication::palette());
        QCOMPARE(green, QColor(0, 0xC0, 0));
        QCOMPARE(t->t1()->palette().color(QPalette::Base), green);
        for (auto [r, c] : {std::pair{1, 2}, std::pair{2, 6}, std::pair{3, 4}, std::pair{1, 1}, std::pair{2, 3}}) {
            t->clickCell(r, c);
            QVERIFY2(t->editorOn(r, c), qPrintable(QString("cell %1,%2").arg(r).arg(c)));
            QVERIFY(t->caretAtEnd()); // wherever in the cell the click landed
        }
        // The cell that was left shows the window background.
        QCOMPARE(t->h.grid()->model()->index(1, 1).data(Qt::BackgroundRole).value<QColor>(),
                 qtface::toQColor(forms::syscolor::Window, QApplication::palette()));
        QCOMPARE(t->h.grid()->model()->index(2, 3).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
        // A click in the editor only places the caret; headings and names are no cells to edit.
        QVERIFY(t->clickCaret(1));
        QVERIFY(t->editorOn(2, 3));
        t->clickCell(0, 3);
        t->clickCell(1, 0);
        QVERIFY(t->editorOn(2, 3));
    }

    void keysOfTheTables_data() {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(kKeys)); ++i) QTest::newRow(kKeys[i].name) << i;
    }

    void keysOfTheTables() {
        QFETCH(int, index);
        const KeyCase& k = kKeys[index];
        t->clickCell(k.row, k.col);
        QVERIFY(t->editorOn(k.row, k.col));
        if (k.caret >= 0) QVERIFY(t->clickCaret(k.caret));
        t->key(k.key);
        QVERIFY(t->editorOn(k.toRow, k.toCol));
        QCOMPARE(t->cell(k.row, k.col), std::string(k.typedCell));
        QCOMPARE(t->shown(k.row, k.col), QString(k.typedCell));
        QCOMPARE(t->t1()->cursorPosition(), k.caretAfter);
        QCOMPARE(t->m().T1.SelStart(), k.caretAfter);
        QCOMPARE(t->m().FG1.Rows(), 4);
    }

    void enterWalksTheRowsAndAsksForANewItemAtTheEnd() {
        t->clickCell(1, 5);
        t->key(Qt::Key_Return);
        QVERIFY(t->editorOn(1, 6));
        t->key(Qt::Key_Enter); // the keypad's
        QVERIFY(t->editorOn(2, 1));
        QVERIFY(t->h.core.dialogs.prompts.empty());

        t->h.core.dialogs.inputAnswers.push_back("Vice");
        t->clickCell(3, 6);
        t->key(Qt::Key_Return);
        QCOMPARE(t->h.core.dialogs.prompts.size(), std::size_t(1));
        QCOMPARE(t->h.core.dialogs.prompts[0].title, std::string("Add Item"));
        QCOMPARE(t->h.core.dialogs.prompts[0].text, std::string("Please type in name of item you would like to add"));
        QCOMPARE(t->h.grid()->model()->rowCount(), 5);
        QCOMPARE(t->shown(4, 0), QString("Vice"));
        QVERIFY(t->editorOn(4, 1));
        QCOMPARE(t->m().AddItemPending, 0);
        // With the caret inside a cell Enter asks too; a cancel leaves the editor
        // on column 1 of the last row and asks no more.
        t->clickCell(1, 3);
        QVERIFY(t->clickCaret(2));
        t->key(Qt::Key_Return);
        QCOMPARE(t->h.core.dialogs.prompts.size(), std::size_t(2));
        QCOMPARE(t->h.grid()->model()->rowCount(), 5);
        QVERIFY(t->editorOn(4, 1));
    }

    void escRestoresTheTextOfTheCellsEntry() {
        // The cell the switch opened comes back as it was loaded.
        t->type("1");
        t->key(Qt::Key_Escape);
        QCOMPARE(t->cell(3, 6), std::string("abc"));
        t->clickCell(1, 1);
        t->type("99");
        QCOMPARE(t->text(t->m().txtCost), QString("$1,125.51"));
        t->key(Qt::Key_Escape);
        QVERIFY(t->editorOn(1, 1));
        QCOMPARE(t->cell(1, 1), std::string("120.50"));
        QVERIFY(t->caretAtEnd());
        QCOMPARE(t->text(t->m().txtCost), QString("$1,125.50"));
        // Typed, left and entered again: Esc brings back the text of the second entry.
        t->type("1");
        t->clickCell(2, 1);
        t->clickCell(1, 1);
        t->type("2");
        t->key(Qt::Key_Escape);
        QVERIFY(t->editorOn(1, 1));
        QCOMPARE(t->cell(1, 1), std::string("120.501"));
    }

    void controlCharactersNeverReachACell() {
        t->clickCell(1, 3);
        QVERIFY(t->clickCaret(2));
        // Ctrl and a letter that no menu takes, and keys whose text is a control
        // character as some keyboards send them.
        for (Qt::Key k : {Qt::Key_B, Qt::Key_J, Qt::Key_M, Qt::Key_I, Qt::Key_Z, Qt::Key_Backspace})
            t->key(k, Qt::ControlModifier);
        for (const char* raw : {"\x02", "\n", "\t", "\x7f", "\xc2\x85"}) {
            QKeyEvent e(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, QString::fromUtf8(raw));
            QApplication::sendEvent(t->focus(), &e);
        }
        QVERIFY(t->editorOn(1, 3));
        QCOMPARE(t->cell(1, 3), std::string("Sop")); // Ctrl+Backspace is a Backspace
        QCOMPARE(t->m().T1.SelStart(), 1);
        QCOMPARE(t->m().FG1.Rows(), 4);
    }

    void pasteAndInputMethodsWriteTheCell() {
        t->clickCell(3, 3); // empty
        // Control characters (C0, DEL, C1 such as NEL) become blanks; characters
        // with a byte of the C1 range inside them (\u20ac, \u0100) stay whole.
        // Each line break (CR LF, CR, LF) is one blank, and nothing after one is lost.
        QGuiApplication::clipboard()->setText(QString::fromUtf8("a\tb\x01" "c,\"d\"\x7f\u0085\u00e9\u20ac\u0100\nsecond\r\nline\rend"));
        t->key(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(t->editorOn(3, 3));
        QCOMPARE(t->cell(3, 3), std::string("a b c,\"d\"  \u00e9\u20ac\u0100 second line end"));
        QVERIFY(t->caretAtEnd());
        // A paste into a money cell counts at once.
        t->clickCell(3, 1);
        QGuiApplication::clipboard()->setText("00");
        t->key(Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(t->cell(3, 1), std::string("500"));
        QCOMPARE(t->text(t->m().txtCost), QString("$1,620.50"));
        // A character composed by an input method goes in as a typed one.
        t->clickCell(1, 3);
        QInputMethodEvent preedit(QStringLiteral("\u00b4"), {});
        QApplication::sendEvent(t->focus(), &preedit);
        QCOMPARE(t->cell(1, 3), std::string("Shop"));
        QInputMethodEvent commit;
        commit.setCommitString(QString::fromUtf8("\xC3\xA9" "s"));
        QApplication::sendEvent(t->focus(), &commit);
        QVERIFY(t->editorOn(1, 3));
        QCOMPARE(t->cell(1, 3), std::string("Shop\xC3\xA9s"));
    }

    // Scrolling closes the editor; it comes back over its cell at the cell's new
    // place while the cell is in view. A key after the cell has left the view, by
    // the wheel or by the scroll bar, brings it back with the editor open on it and
    // goes on into the editor: the text typed before and after stays.
    void scrollingWhileEditingNeverWritesAnotherCell() {
        t.reset();
        t = std::make_unique<Typing>(qttest::itemRows(40));
        QVERIFY(t->started);
        auto& g = t->m().FG1;
        QScrollBar* bar = t->h.grid()->verticalScrollBar();
        const int rowsInView = g.Rows() - g.TopRow(); // the switch left the last row at the bottom
        const int row = g.Rows() - 6;
        t->clickCell(row, 3);
        QVERIFY(t->editorOn(row, 3));
        const QRect before = t->editorRect();

        wheel(t->h, 1); // towards the top, by a few rows
        const int top = g.TopRow();
        QVERIFY(top < g.Rows() - rowsInView && row < top + rowsInView - 1);
        QCOMPARE(bar->value(), top - 1);
        QVERIFY(t->editorOn(row, 3));
        QVERIFY(t->editorRect().top() > before.top());
        t->type("9");
        QCOMPARE(t->cell(row, 3), std::string("Shop9"));

        bar->setValue(bar->value() - 1); // as the user drags the bar
        QCOMPARE(g.TopRow(), top - 1);
        QVERIFY(t->editorOn(row, 3));

        const std::function<void()> awayBy[] = {[&] { wheel(t->h, 10); }, [&] { bar->setValue(0); }};
        for (const auto& away : awayBy) {
            away(); // the cell leaves the view: the editor stays closed
            QVERIFY(row >= g.TopRow() + rowsInView);
            QVERIFY(!t->t1()->isVisible());
            QCOMPARE(t->h.core.runtime.focused(), &g);
            t->type("7");
            QVERIFY(t->editorOn(row, 3));
            QVERIFY(t->caretAtEnd());
        }
        QCOMPARE(t->cell(row, 3), std::string("Shop977"));
        for (int r = 1; r < g.Rows(); ++r)
            if (r != row) QCOMPARE(t->cell(r, 3), std::string("Shop"));
        t->key(Qt::Key_Escape); // the text of the cell's entry
        QVERIFY(t->editorOn(row, 3));
        QCOMPARE(t->cell(row, 3), std::string("Shop"));
    }

    // A hidden editor that still holds the focus lies over no cell the user sees:
    // no way of input reaches it.
    void aHiddenEditorHoldingTheFocusTakesNoInput() {
        t->clickCell(1, 3);
        t->h.host.dispatch([&] { t->m().T1.setVisible(false); });
        QCOMPARE(t->h.core.runtime.focused(), &t->m().T1);
        QGuiApplication::clipboard()->setText("pasted");
        t->type("z");
        t->key(Qt::Key_Backspace);
        t->key(Qt::Key_Delete);
        t->key(Qt::Key_V, Qt::ControlModifier);
        QInputMethodEvent commit;
        commit.setCommitString("q");
        QApplication::sendEvent(t->focus(), &commit);
        QCOMPARE(t->cell(1, 3), std::string("Shop"));
        QCOMPARE(t->m().T1.Text(), std::string("Shop"));
    }
};

QTEST_MAIN(TypingTest)
#include "typing_test.moc"
