// Typing into the real window: the editor laid over the cell a click chose,
// Qt's keys turned into the editor's, what never reaches a cell, paste and input methods,
// and scrolling while editing. Every piece of input is a real Qt event.
#include <QClipboard>
#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>

#include "qt/key_codes.h"
#include "support/qt_harness.h"

namespace {

// The program's window with the cell editor over the grid, as the user meets it.
struct Editor : qttest::QtHarness {
    QLineEdit* t1() const { return widgetAs<QLineEdit>(main->T1); }
    std::string cell(int r, int c) const { return std::string(main->FG1.TextMatrix(r, c)); }
    QString shown(int r, int c) const { return grid()->model()->index(r, c).data().toString(); }
    // In the grid's viewport.
    QRect editorRect() const {
        QWidget* frame = t1()->parentWidget();
        const QPoint viewport = grid()->viewport()->mapTo(frame, QPoint(0, 0));
        return QRect(t1()->mapTo(frame, QPoint(0, 0)) - viewport, t1()->size());
    }
    void clickCell(int r, int c) { QTest::mouseClick(grid()->viewport(), Qt::LeftButton, {}, grid()->cellRect(r, c).center()); }
    // Where in the editor Qt puts the caret before character n.
    QPoint caretPoint(int n) const {
        for (int x = 0; x < t1()->width(); ++x)
            if (t1()->cursorPositionAt(QPoint(x, t1()->height() / 2)) == n) return QPoint(x, t1()->height() / 2);
        return {-1, -1};
    }
    // A click in the editor there.
    bool clickCaret(int n) {
        QTest::mouseClick(t1(), Qt::LeftButton, {}, caretPoint(n));
        return main->T1.SelStart() == n && t1()->cursorPosition() == n;
    }
    // The editor's context menu, its entry chosen by its access key.
    void contextMenu(Qt::Key entry) {
        QTimer::singleShot(0, [entry] { QTest::keyClick(QApplication::activePopupWidget(), entry); });
        QContextMenuEvent e(QContextMenuEvent::Mouse, QPoint(2, 2), t1()->mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(t1(), &e);
    }
    // Open on the cell: the editor lies exactly over it, holds its text and the
    // keyboard focus, and the grid draws the same text.
    bool editorOn(int r, int c) const {
        const QRect cellRect = grid()->cellRect(r, c);
        const bool ok = main->FG1.Row() == r && main->FG1.Col() == c && t1()->isVisible() && QApplication::focusWidget() == t1() &&
                        !cellRect.isEmpty() && editorRect() == cellRect && t1()->text() == QString::fromStdString(cell(r, c)) &&
                        shown(r, c) == t1()->text();
        if (!ok) qWarning() << "cell" << main->FG1.Row() << main->FG1.Col() << t1()->isVisible() << editorRect() << cellRect << t1()->text();
        return ok;
    }
    bool caretAtEnd() const { return t1()->cursorPosition() == t1()->text().size() && main->T1.SelStart() == main->T1.length(); }
    // Keys go to whichever widget Qt gives the keyboard focus.
    QWidget* focus() const { return QApplication::focusWidget() ? QApplication::focusWidget() : topWidget(); }
    void key(int k, Qt::KeyboardModifiers mods = {}) { QTest::keyClick(focus(), static_cast<Qt::Key>(k), mods); }
    void type(const QString& s) { QTest::keyClicks(focus(), s); }
    // The mouse wheel turned over the grid (or over the editor, where the
    // pointer stays after a click on a cell), notches towards the top.
    void wheel(int notches, bool overEditor = false) {
        QWidget* vp = overEditor ? static_cast<QWidget*>(t1()) : grid()->viewport();
        const QPointF at(vp->width() / 2.0, vp->height() / 2.0);
        QWheelEvent e(at, vp->mapToGlobal(at), {}, QPoint(0, 120 * notches), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(vp, &e);
    }
};

// Qt's keys as the runtime takes them (what each then does in the editor is
// the core editor test's key table): key code, shift state and characters.
struct KeyCase {
    Qt::Key key;
    Qt::KeyboardModifiers mods;
    const char* text; // as a keyboard sends it
    int code, shift;
    std::u32string chars;
};
const Qt::KeyboardModifiers none, ctrl = Qt::ControlModifier;
const KeyCase kKeys[] = {
    {Qt::Key_Backspace, none, "\b", 8, 0, U"\b"}, {Qt::Key_Backspace, ctrl, "", 8, 2, U"\b"}, {Qt::Key_Delete, none, "\x7f", 46, 0, U""},
    {Qt::Key_Left, none, "", 37, 0, U""}, {Qt::Key_Up, none, "", 38, 0, U""}, {Qt::Key_Right, none, "", 39, 0, U""},
    {Qt::Key_Down, none, "", 40, 0, U""}, {Qt::Key_Home, none, "", 36, 0, U""}, {Qt::Key_End, none, "", 35, 0, U""},
    {Qt::Key_Return, none, "\r", 13, 0, U"\r"}, {Qt::Key_Enter, Qt::KeypadModifier, "\r", 13, 0, U"\r"},
    {Qt::Key_Escape, none, "\x1b", 27, 0, U"\x1b"}, {Qt::Key_A, Qt::ShiftModifier, "A", 65, 1, U"A"}, {Qt::Key_5, Qt::KeypadModifier, "5", 101, 0, U"5"},
    {Qt::Key_B, ctrl, "\x02", 66, 2, U""}, {Qt::Key_M, ctrl, "\r", 77, 2, U""}, // Ctrl and a letter types nothing, Ctrl+M is no Enter
    {Qt::Key_Eacute, none, "\u00e9", 0, 0, U"\u00e9"}, {Qt::Key_Space, none, " ", 32, 0, U" "},
    // Control characters, as some keyboards send them with no key, type nothing.
    {Qt::Key_unknown, none, "\x02", 0, 0, U""}, {Qt::Key_unknown, none, "\n", 0, 0, U""}, {Qt::Key_unknown, none, "\t", 0, 0, U""},
    {Qt::Key_unknown, none, "\x7f", 0, 0, U""}, {Qt::Key_unknown, none, "\u0085", 0, 0, U""},
};

} // namespace

// Each test has the window with Garage open (init), and an empty Kitchen beside it.
class TypingTest : public QObject {
    Q_OBJECT
    std::unique_ptr<Editor> h;
    qm::frmMain& m() { return h->m(); }
private slots:
    void init() {
        h = std::make_unique<Editor>();
        QVERIFY(h->open({{"Garage", qttest::kGarage}, {"Kitchen", {}}}));
    }
    void cleanup() { h.reset(); }

    void aClickLaysTheEditorOverThatCell() {
        // The switch ends with the editor open on the last cell of the last row.
        QVERIFY(h->editorOn(3, 6));
        QVERIFY(h->caretAtEnd());
        QCOMPARE(h->t1()->palette().color(QPalette::Base), QColor(0, 0xC0, 0));
        for (auto [r, c] : {std::pair{1, 2}, std::pair{2, 6}, std::pair{3, 4}, std::pair{1, 1}, std::pair{2, 3}}) {
            h->clickCell(r, c);
            QVERIFY2(h->editorOn(r, c), qPrintable(QString("cell %1,%2").arg(r).arg(c)));
            QVERIFY(h->caretAtEnd()); // wherever in the cell the click landed
        }
        // A click in the editor only places the caret; headings and names are no cells to edit.
        QVERIFY(h->clickCaret(1));
        QVERIFY(h->editorOn(2, 3));
        h->clickCell(0, 3);
        h->clickCell(1, 0);
        QVERIFY(h->editorOn(2, 3));
    }

    void keysBecomeTheRuntimesKeys_data() {
        QTest::addColumn<int>("index");
        for (int i = 0; i < int(std::size(kKeys)); ++i) QTest::newRow(QKeySequence(kKeys[i].key | kKeys[i].mods).toString().toUtf8()) << i;
    }
    void keysBecomeTheRuntimesKeys() {
        QFETCH(int, index);
        const KeyCase& k = kKeys[index];
        const qtface::KeyStroke got = qtface::keyStroke(QKeyEvent(QEvent::KeyPress, k.key, k.mods, QString::fromUtf8(k.text)));
        QCOMPARE(std::tuple(got.keyCode, got.shift, got.chars == k.chars), std::tuple(k.code, k.shift, true));
        // Pressed in the cell editor, each key goes down in the runtime with its code, also one that types nothing.
        int reached = 0;
        m().T1.KeyDown = [&](int& code, int) { reached = code; };
        QKeyEvent e(QEvent::KeyPress, k.key, k.mods, QString::fromUtf8(k.text));
        QApplication::sendEvent(h->t1(), &e);
        QCOMPARE(reached, k.code);
    }

    // A drag selects from where it began; the context menu copies, selects all and pastes.
    void dragSelectsAndTheContextMenuEdits() {
        h->clickCell(1, 3); // "Shop"
        const QPoint from = h->caretPoint(3), to = h->caretPoint(1);
        QTest::mousePress(h->t1(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, h->t1()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(h->t1(), &move);
        QTest::mouseRelease(h->t1(), Qt::LeftButton, {}, to);
        QCOMPARE((std::pair{m().T1.SelStart(), m().T1.SelLength()}), (std::pair{1, 2}));
        h->contextMenu(Qt::Key_C);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("ho"));
        h->contextMenu(Qt::Key_A);
        QCOMPARE(m().T1.SelLength(), 4);
        h->contextMenu(Qt::Key_P);
        QCOMPARE(h->t1()->text(), QString("ho"));
        QCOMPARE(h->cell(1, 3), std::string("ho"));
    }

    void pasteAndInputMethodsWriteTheCell() {
        h->clickCell(3, 3); // empty
        // Control characters (C0, DEL, C1 such as NEL) become blanks; characters
        // with a byte of the C1 range inside them (\u20ac, \u0100) stay whole.
        // Each line break (CR LF, CR, LF) is one blank, and nothing after one is lost.
        QGuiApplication::clipboard()->setText(QString::fromUtf8("a\tb\x01" "c,\"d\"\x7f\u0085\u00e9\u20ac\u0100\nsecond\r\nline\rend"));
        h->key(Qt::Key_V, Qt::ControlModifier);
        QVERIFY(h->editorOn(3, 3));
        QCOMPARE(h->cell(3, 3), std::string("a b c,\"d\"  \u00e9\u20ac\u0100 second line end"));
        QVERIFY(h->caretAtEnd());
        // A character composed by an input method goes in as a typed one.
        h->clickCell(1, 3);
        QInputMethodEvent preedit(QStringLiteral("\u00b4"), {});
        QApplication::sendEvent(h->focus(), &preedit);
        QCOMPARE(h->cell(1, 3), std::string("Shop"));
        QInputMethodEvent commit;
        commit.setCommitString(QString::fromUtf8("\xC3\xA9" "s"));
        QApplication::sendEvent(h->focus(), &commit);
        QVERIFY(h->editorOn(1, 3));
        QCOMPARE(h->cell(1, 3), std::string("Shop\xC3\xA9s"));
    }

    // Scrolling closes the editor; it comes back over its cell at the cell's new
    // place while the cell is in view. A key after the cell has left the view, by
    // the wheel or by the scroll bar, brings it back with the editor open on it and
    // goes on into the editor: the text typed before and after stays.
    void scrollingWhileEditingNeverWritesAnotherCell() {
        h = std::make_unique<Editor>();
        QVERIFY(h->open({{"Garage", qmtest::numberedItems(40)}}));
        auto& g = m().FG1;
        QScrollBar* bar = h->grid()->verticalScrollBar();
        const int rowsInView = g.Rows() - g.TopRow(); // the switch left the last row at the bottom
        const int row = g.Rows() - 6;
        h->clickCell(row, 3);
        const QRect before = h->editorRect();

        h->wheel(1, true); // towards the top, by a few rows, the pointer still over the editor
        const int top = g.TopRow();
        QVERIFY(top < g.Rows() - rowsInView && row < top + rowsInView - 1);
        QCOMPARE(bar->value(), top - 1);
        QVERIFY(h->editorOn(row, 3));
        QVERIFY(h->editorRect().top() > before.top());
        h->type("9");

        bar->setValue(bar->value() - 1); // as the user drags the bar
        QCOMPARE(g.TopRow(), top - 1);
        QVERIFY(h->editorOn(row, 3));

        const std::function<void()> awayBy[] = {[&] { h->wheel(10); }, [&] { bar->setValue(0); }};
        for (const auto& away : awayBy) {
            away(); // the cell leaves the view: the editor stays closed
            QVERIFY(row >= g.TopRow() + rowsInView);
            QVERIFY(!h->t1()->isVisible());
            QCOMPARE(h->core.runtime.focused(), &g);
            h->type("7");
            QVERIFY(h->editorOn(row, 3));
            QVERIFY(h->caretAtEnd());
        }
        QCOMPARE(h->cell(row, 3), std::string("Shop977"));
        for (int r = 1; r < g.Rows(); ++r)
            if (r != row) QCOMPARE(h->cell(r, 3), std::string("Shop"));
    }

    // No input reaches a cell while a hidden editor still holds the focus: it
    // lies over no cell the user sees.
    void inputThatMustNotReachACell() {
        h->clickCell(1, 3);
        h->host.dispatch([&] { m().T1.setVisible(false); });
        QCOMPARE(h->core.runtime.focused(), &m().T1);
        QGuiApplication::clipboard()->setText("pasted");
        h->type("z");
        for (int k : {Qt::Key_Backspace, Qt::Key_Delete}) h->key(k);
        h->key(Qt::Key_V, Qt::ControlModifier);
        QInputMethodEvent commit;
        commit.setCommitString("q");
        QApplication::sendEvent(h->focus(), &commit);
        QCOMPARE(h->cell(1, 3), std::string("Shop"));
        QCOMPARE(m().T1.Text(), std::string("Shop"));
    }
};

QTEST_MAIN(TypingTest)
#include "typing_test.moc"
