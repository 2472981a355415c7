// The face on forms of its own, independent of the program: the key path of a
// text box, the focus keys, list and check box input, buttons, and when the
// widgets follow the model.
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "forms/listbox.h"
#include "support/qt_harness.h"

namespace {

// A small window: two text boxes, a list, three buttons (one disabled), a check box, a label.
struct TestForm {
    explicit TestForm(forms::Runtime& rt)
        : form(rt, "frmTest"), box(form, nullptr, "txtBox"), other(form, nullptr, "txtOther"), list(form, nullptr, "lstList"),
          ok(form, nullptr, "cmdOK"), cancel(form, nullptr, "cmdCancel"), check(form, nullptr, "chkCheck"),
          label(form, nullptr, "lblLabel"), off(form, nullptr, "cmdOff") {
        form.Caption = "Test";
        form.ClientWidth = 6000;
        form.ClientHeight = 4000;
        auto place = [](forms::Control& c, int left, int top, int width, int height, int tab) {
            c.move(left, top, width, height);
            c.setTabIndex(tab);
        };
        place(box, 120, 120, 2400, 300, 0);
        place(other, 120, 480, 2400, 300, 1);
        place(list, 120, 900, 2400, 1500, 2);
        place(ok, 3000, 120, 1200, 400, 3);
        place(off, 3000, 1080, 1200, 400, 4);
        place(cancel, 3000, 600, 1200, 400, 5);
        place(check, 3000, 1600, 2000, 300, 6);
        label.move(120, 2600, 3000, 300);
        list.Sorted = true;
        for (const char* s : {"apple", "banana", "cherry", "date"}) list.AddItem(s);
        ok.Caption = "OK";
        ok.Default = true;
        cancel.Caption = "Cancel";
        cancel.Cancel = true;
        off.Caption = "Off";
        off.setEnabled(false);
        check.Caption = "Check";
        label.setCaption("start");
        form.announce();
    }
    ~TestForm() { form.retire(); }

    forms::Form form;
    forms::TextBox box, other;
    forms::ListBox list;
    forms::Button ok, cancel;
    forms::CheckBox check;
    forms::Label label;
    forms::Button off;
};

struct Fixture : qttest::BareFace {
    Fixture() { t = std::make_unique<TestForm>(rt); }
    ~Fixture() {
        t.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    bool show() {
        t->form.setVisible(true);
        host.sync();
        QWidget* top = window()->window();
        top->activateWindow();
        return QTest::qWaitForWindowActive(top);
    }
    qtface::FormWindow* window() { return host.window(t->form); }
    template <class W> W* w(const forms::Control& c) { return qobject_cast<W*>(window()->widgetOf(c)); }
    void focus(forms::Control& c) { host.dispatch([&] { c.TrySetFocus(); }); }

    std::unique_ptr<TestForm> t;
    std::vector<std::string> log;
};

} // namespace

// Each test has the test form shown and active.
class FaceInputTest : public QObject {
    Q_OBJECT
    std::unique_ptr<Fixture> f;
private slots:
    void init() {
        f = std::make_unique<Fixture>();
        QVERIFY(f->show());
    }
    void cleanup() { f.reset(); }

    void keyGoesThroughKeyDownKeyPressThenTheBox() {
        auto& box = f->t->box;
        box.KeyDown = [&](int& code, int shift) { f->log.push_back("down " + std::to_string(code) + "/" + std::to_string(shift) + " [" + box.Text() + "]"); };
        box.KeyPress = [&](int& ch) {
            f->log.push_back("press " + std::to_string(ch) + " [" + box.Text() + "]");
            if (ch == '1') ch = '2'; // the box takes the character KeyPress leaves
        };
        box.Change = [&] { f->log.push_back("change [" + box.Text() + "]"); };
        f->focus(box);
        auto* edit = f->w<QLineEdit>(box);
        QCOMPARE(QApplication::focusWidget(), edit);

        QTest::keyClick(edit, 'A', Qt::ShiftModifier);
        QTest::keyClick(edit, '1');
        QTest::keyClick(edit, Qt::Key_Left);
        QTest::keyClick(edit, Qt::Key_Backspace);
        const std::vector<std::string> want = {
            "down 16/1 []", // Shift itself, as it goes down
            "down 65/1 []", "press 65 []", "change [A]",
            "down 49/0 [A]", "press 49 [A]", "change [A2]",
            "down 37/0 [A2]", // no character: the caret moves
            "down 8/0 [A2]", "press 8 [A2]", "change [2]",
        };
        QCOMPARE(f->log, want);
        QCOMPARE(edit->text(), QString("2"));
        QCOMPARE(edit->cursorPosition(), 0);
    }

    void caretKeysMoveTheModelsCaret() {
        auto& box = f->t->box;
        f->focus(box);
        auto* edit = f->w<QLineEdit>(box);
        QTest::keyClick(edit, Qt::Key_H);
        QKeyEvent accented(QEvent::KeyPress, Qt::Key_Eacute, Qt::NoModifier, QString::fromUtf8("\xC3\xA9"));
        QApplication::sendEvent(edit, &accented);
        QTest::keyClicks(edit, "llo");
        QCOMPARE(box.Text(), std::string("h\xC3\xA9llo"));
        QTest::keyClick(edit, Qt::Key_Home);
        QTest::keyClick(edit, Qt::Key_Right);
        QTest::keyClick(edit, Qt::Key_Right);
        QCOMPARE(box.SelStart(), 2);
        QCOMPARE(edit->cursorPosition(), 2);
        QTest::keyClick(edit, Qt::Key_Delete);
        QCOMPARE(box.Text(), std::string("h\xC3\xA9lo"));
        QTest::keyClick(edit, Qt::Key_End);
        QCOMPARE(edit->cursorPosition(), 4);
        // A selection made in the model shows in the widget, and again when the
        // box has the focus back.
        f->host.dispatch([&] { box.placeCaret(1, 2); });
        QCOMPARE(edit->selectionStart(), 1);
        QCOMPARE(edit->selectedText(), QString::fromUtf8("\xC3\xA9l"));
        f->focus(f->t->other);
        f->focus(box);
        QCOMPARE(QApplication::focusWidget(), edit);
        QCOMPARE(edit->selectedText(), QString::fromUtf8("\xC3\xA9l"));
        // A cut takes the selection to the clipboard and out of the box.
        QTest::keyClick(edit, Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromUtf8("\xC3\xA9l"));
        QCOMPARE(box.Text(), std::string("ho"));
    }

    void characterBelongsToTheControlThatSawTheKeyDown() {
        auto& box = f->t->box;
        std::vector<std::string> pressedIn;
        box.KeyDown = [&](int&, int) { f->t->other.SetFocus(); };
        box.KeyPress = [&](int&) { pressedIn.push_back("box"); };
        f->t->other.KeyPress = [&](int&) { pressedIn.push_back("other"); };
        f->focus(box);
        QTest::keyClick(f->w<QLineEdit>(box), Qt::Key_Q);
        QCOMPARE(pressedIn, std::vector<std::string>{"box"});
        QCOMPARE(box.Text(), std::string("q"));
        QCOMPARE(f->t->other.Text(), std::string());
        QCOMPARE(f->rt.focused(), &f->t->other);
        QCOMPARE(QApplication::focusWidget(), f->w<QLineEdit>(f->t->other));
    }

    void clickPlacesTheCaretAndMovesTheFocus() {
        auto& other = f->t->other;
        f->host.dispatch([&] { other.setText("abcdefgh"); });
        f->focus(f->t->box);
        int gotFocus = 0;
        other.GotFocus = [&] { ++gotFocus; };
        auto* edit = f->w<QLineEdit>(other);
        QTest::mouseClick(edit, Qt::LeftButton, {}, QPoint(edit->width() - 3, edit->height() / 2));
        QCOMPARE(f->rt.focused(), &other);
        QCOMPARE(gotFocus, 1);
        QCOMPARE(other.SelStart(), 8);
        QCOMPARE(edit->text(), QString("abcdefgh")); // the widget edited nothing itself
    }

    // Keys the face takes for the form: Tab in the tab order, Enter and Esc for
    // the default and cancel buttons.
    void focusKeysAndDefaultButtons() {
        auto& t = *f->t;
        f->focus(t.box);
        auto tab = [&](bool back = false) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, back ? Qt::ShiftModifier : Qt::NoModifier);
            return f->rt.focused();
        };
        std::vector<forms::Control*> order;
        for (int i = 0; i < 6; ++i) order.push_back(tab());
        order.push_back(tab(true));
        // The disabled button is passed over, and round again.
        QCOMPARE(order, (std::vector<forms::Control*>{&t.other, &t.list, &t.ok, &t.cancel, &t.check, &t.box, &t.check}));
        QCOMPARE(QApplication::focusWidget(), f->window()->widgetOf(t.check));

        int okClicks = 0, cancelClicks = 0, downs = 0;
        t.ok.Click = [&] { ++okClicks; };
        t.cancel.Click = [&] { ++cancelClicks; };
        t.box.KeyDown = [&](int&, int) { ++downs; };
        f->focus(t.box);
        QTest::keyClick(f->w<QLineEdit>(t.box), Qt::Key_Return);
        QTest::keyClick(f->w<QLineEdit>(t.box), Qt::Key_Escape);
        QCOMPARE(okClicks, 1);
        QCOMPARE(cancelClicks, 1);
        QCOMPARE(downs, 0);
        // On a button, Enter presses that button.
        f->focus(t.cancel);
        QTest::keyClick(f->w<QPushButton>(t.cancel), Qt::Key_Return);
        QCOMPARE(cancelClicks, 2);
        QCOMPARE(okClicks, 1);
    }

    // A click on an entry gives the list the focus before it selects; keys
    // select through the model, which the widget follows.
    void listTakesKeysAndClicksThroughTheModel() {
        auto& list = f->t->list;
        list.GotFocus = [&] { f->log.push_back("gotfocus " + std::to_string(list.ListIndex())); };
        list.Click = [&] { f->log.push_back("click " + std::to_string(list.ListIndex())); };
        f->focus(f->t->box);
        auto* w = f->w<QListWidget>(list);
        auto clickItem = [&](int i) { QTest::mouseClick(w->viewport(), Qt::LeftButton, {}, w->visualItemRect(w->item(i)).center()); };
        clickItem(1);
        for (Qt::Key k : {Qt::Key_Down, Qt::Key_End, Qt::Key_B, Qt::Key_Up, Qt::Key_Up}) QTest::keyClick(w, k); // at the top: no Click
        QCOMPARE(w->currentRow(), 0);
        clickItem(2);
        QCOMPARE(f->log, (std::vector<std::string>{"gotfocus -1", "click 1", "click 2", "click 3", "click 1", "click 0", "click 2"}));
        QCOMPARE(w->currentRow(), 2);
        // Items added from code appear, the selection stays on its entry.
        f->host.dispatch([&] { list.AddItem("aardvark"); });
        QCOMPARE(w->count(), 5);
        QCOMPARE(w->item(0)->text(), QString("aardvark"));
        QCOMPARE(w->currentRow(), 3);
    }

    void checkBoxClickTogglesTheModel() {
        auto& check = f->t->check;
        int clicks = 0;
        check.Click = [&] { ++clicks; };
        auto* w = f->w<QCheckBox>(check);
        QTest::mouseClick(w, Qt::LeftButton, {}, QPoint(5, w->height() / 2));
        QCOMPARE(check.Value(), 1);
        QVERIFY(w->isChecked());
        QCOMPARE(f->rt.focused(), &check);
        QTest::keyClick(w, Qt::Key_Space);
        QCOMPARE(check.Value(), 0);
        QVERIFY(!w->isChecked());
        QCOMPARE(clicks, 2);
    }

    // Inside an event the widgets keep still, but for a control shown during
    // it, which is painted at once; they follow when the event ends.
    void widgetsFollowTheModelWhenTheEventEnds() {
        auto& t = *f->t;
        auto* label = f->w<QLabel>(t.label);
        auto* other = f->w<QLineEdit>(t.other);
        f->host.dispatch([&] { t.other.setVisible(false); });
        QVERIFY(!other->isVisible());
        QString seenInside;
        bool shownInside = false;
        t.ok.Click = [&] {
            for (int i = 0; i < 200000; ++i) t.label.setCaption(std::to_string(i));
            t.box.move(240, 120, 2400, 300);
            seenInside = label->text();
            t.other.setText("Loading...");
            t.other.setVisible(true);
            shownInside = other->isVisible() && other->text() == "Loading...";
            t.other.setVisible(false);
        };
        QTest::mouseClick(f->w<QPushButton>(t.ok), Qt::LeftButton);
        QCOMPARE(seenInside, QString("start"));
        QVERIFY(shownInside);
        QVERIFY(!other->isVisible());
        QCOMPARE(label->text(), QString("199999"));
        QCOMPARE(f->window()->widgetOf(t.box)->x(), qRound(240 * f->host.twips().dpi() / 1440.0));
    }

    void formGoingFromItsOwnButtonIsSafe() {
        f->t->ok.Click = [&] { f->t.reset(); };
        QPointer<QWidget> top = f->window()->window();
        QTest::mouseClick(f->window()->widgetOf(f->t->ok), Qt::LeftButton);
        QVERIFY(!f->t);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(top.isNull());
    }

    void sizableFormIsToldItsSizeWhenShownAndResized() {
        qttest::BareFace face;
        forms::Runtime& rt = face.rt;
        qtface::QtHost& host = face.host;
        forms::Form form(rt, "frmSizable");
        form.Border = forms::BorderStyle::Sizable;
        form.ClientWidth = 4800;
        form.ClientHeight = 3600;
        int resizes = 0;
        form.Resize = [&] { ++resizes; };
        form.announce();
        host.dispatch([&] { form.setVisible(true); });
        QWidget* top = host.window(form)->window();
        QCOMPARE(host.window(form)->client()->size(), QSize(host.twips().px(4800), host.twips().px(3600)));
        QTRY_COMPARE(resizes, 1);
        QCOMPARE(form.Width(), host.twips().twips(top->frameGeometry().width()));
        QCOMPARE(form.Height(), host.twips().twips(top->frameGeometry().height()));
        top->resize(top->width() + 30, top->height() + 15);
        QTRY_COMPARE(resizes, 2);
        QCOMPARE(form.Width(), host.twips().twips(top->frameGeometry().width()));
        form.retire();
    }

    void closeByTheWindowManagerAsksTheForm() {
        int asked = 0;
        f->t->form.CloseRequested = [&] { ++asked; };
        QWidget* top = f->window()->window();
        top->close();
        QCOMPARE(asked, 1);
        QVERIFY(top->isVisible()); // the form decides; this one stays
        f->t->form.CloseRequested = nullptr;
        top->close();
        QVERIFY(!f->t->form.Visible()); // without a handler the form is hidden
        QVERIFY(!top->isVisible());
    }
};

QTEST_MAIN(FaceInputTest)
#include "face_input_test.moc"
