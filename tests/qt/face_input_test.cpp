// The face on forms of its own, independent of the program: a text box's
// selection and clipboard, the focus keys, list input, buttons, when the
// widgets follow the model, a sizable form's size, and a grid's model.
#include <QCheckBox>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>

#include "forms/grid.h"
#include "forms/listbox.h"
#include "qt/colors_fonts.h"
#include "support/qt_harness.h"

namespace {

// A small window: two text boxes, a list, three buttons (one disabled), a check box, a label.
struct TestForm {
    explicit TestForm(forms::Runtime& rt) : form(rt, "frmTest") {
        form.ClientWidth = 6000;
        form.ClientHeight = 4000;
        struct Place { forms::Control* c; int left, top, width, height; };
        const Place places[] = {{&box, 120, 120, 2400, 300}, {&other, 120, 480, 2400, 300}, {&list, 120, 900, 2400, 1500},
                                {&ok, 3000, 120, 1200, 400}, {&off, 3000, 1080, 1200, 400}, {&cancel, 3000, 600, 1200, 400},
                                {&check, 3000, 1600, 2000, 300}};
        int tab = 0;
        for (const Place& p : places) {
            p.c->move(p.left, p.top, p.width, p.height);
            p.c->setTabIndex(tab++);
        }
        label.move(120, 2600, 3000, 300);
        list.Sorted = true;
        for (const char* s : {"apple", "banana", "cherry", "date"}) list.AddItem(s);
        ok.Default = true;
        cancel.Cancel = true;
        off.setEnabled(false);
        check.Caption = "Check";
        label.setCaption("start");
        form.announce();
    }
    ~TestForm() { form.retire(); }

    forms::Form form;
    forms::TextBox box{form, nullptr, "txtBox"}, other{form, nullptr, "txtOther"};
    forms::ListBox list{form, nullptr, "lstList"};
    forms::Button ok{form, nullptr, "cmdOK"}, cancel{form, nullptr, "cmdCancel"};
    forms::CheckBox check{form, nullptr, "chkCheck"};
    forms::Label label{form, nullptr, "lblLabel"};
    forms::Button off{form, nullptr, "cmdOff"};
};

struct Fixture : qttest::BareFace {
    std::unique_ptr<TestForm> t = std::make_unique<TestForm>(rt);
    std::vector<std::string> log;
    ~Fixture() {
        t.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

} // namespace

// Each test has the test form shown and active.
class FaceInputTest : public QObject {
    Q_OBJECT
    std::unique_ptr<Fixture> f;
private slots:
    void init() {
        f = std::make_unique<Fixture>();
        QVERIFY(f->show(f->t->form));
    }
    void cleanup() { f.reset(); }

    // A selection made in the model shows in the widget, and again when the box
    // has the focus back; a cut takes it to the clipboard and out of the box.
    void selectionShowsAndCutsToTheClipboard() {
        auto& box = f->t->box;
        f->focus(box);
        auto* edit = f->w<QLineEdit>(box);
        QTest::keyClick(edit, Qt::Key_H);
        QKeyEvent accented(QEvent::KeyPress, Qt::Key_Eacute, Qt::NoModifier, QString::fromUtf8("\xC3\xA9"));
        QApplication::sendEvent(edit, &accented);
        QTest::keyClicks(edit, "llo");
        f->host.dispatch([&] { box.placeCaret(1, 2); });
        QCOMPARE(edit->selectionStart(), 1);
        QCOMPARE(edit->selectedText(), QString::fromUtf8("\xC3\xA9l"));
        f->focus(f->t->other);
        f->focus(box);
        QCOMPARE(QApplication::focusWidget(), edit);
        QCOMPARE(edit->selectedText(), QString::fromUtf8("\xC3\xA9l"));
        QTest::keyClick(edit, Qt::Key_X, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), QString::fromUtf8("\xC3\xA9l"));
        QCOMPARE(box.Text(), std::string("hlo"));
    }

    // Keys the face takes for the form: Tab in the tab order, Enter and Esc for
    // the default and cancel buttons.
    void focusKeysAndDefaultButtons() {
        f->focus(f->t->box);
        auto tab = [&](bool back = false) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, back ? Qt::ShiftModifier : Qt::NoModifier);
            return f->rt.focused();
        };
        std::vector<forms::Control*> order;
        for (int i = 0; i < 6; ++i) order.push_back(tab());
        order.push_back(tab(true));
        // The disabled button is passed over, and round again.
        QCOMPARE(order, (std::vector<forms::Control*>{&f->t->other, &f->t->list, &f->t->ok, &f->t->cancel, &f->t->check, &f->t->box, &f->t->check}));
        QCOMPARE(QApplication::focusWidget(), f->w<QCheckBox>(f->t->check));

        f->t->ok.Click = [&] { f->log.push_back("ok"); };
        f->t->cancel.Click = [&] { f->log.push_back("cancel"); };
        f->t->box.KeyDown = [&](int&, int) { f->log.push_back("box's KeyDown"); };
        f->focus(f->t->box);
        QTest::keyClick(f->w<QLineEdit>(f->t->box), Qt::Key_Return);
        QTest::keyClick(f->w<QLineEdit>(f->t->box), Qt::Key_Escape);
        // On a button, Enter presses that button.
        f->focus(f->t->cancel);
        QTest::keyClick(f->w<QPushButton>(f->t->cancel), Qt::Key_Return);
        QCOMPARE(f->log, (std::vector<std::string>{"ok", "cancel", "cancel"}));
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

    // Inside an event the widgets keep still, but for a control shown once
    // the event has run long enough, which is painted at once; they follow
    // when the event ends.
    void widgetsFollowTheModelWhenTheEventEnds() {
        auto* label = f->w<QLabel>(f->t->label);
        auto* other = f->w<QLineEdit>(f->t->other);
        f->host.dispatch([&] { f->t->other.setVisible(false); });
        QVERIFY(!other->isVisible());
        f->host.setPaintAtOnceAfter(std::chrono::hours(1));
        bool shownQuick = true;
        f->t->ok.Click = [&] {
            f->t->other.setVisible(true);
            shownQuick = other->isVisible();
            f->t->other.setVisible(false);
        };
        QTest::mouseClick(f->w<QPushButton>(f->t->ok), Qt::LeftButton);
        QVERIFY(!shownQuick);

        f->host.setPaintAtOnceAfter(std::chrono::milliseconds(0));
        QString seenInside;
        bool shownInside = false;
        f->t->ok.Click = [&] {
            for (int i = 0; i < 200000; ++i) f->t->label.setCaption(std::to_string(i));
            f->t->box.move(240, 120, 2400, 300);
            seenInside = label->text();
            f->t->other.setText("Loading...");
            f->t->other.setVisible(true);
            shownInside = other->isVisible() && other->text() == "Loading...";
            f->t->other.setVisible(false);
        };
        QTest::mouseClick(f->w<QPushButton>(f->t->ok), Qt::LeftButton);
        QCOMPARE(seenInside, QString("start"));
        QVERIFY(shownInside);
        QVERIFY(!other->isVisible());
        QCOMPARE(label->text(), QString("199999"));
        QCOMPARE(f->w<QLineEdit>(f->t->box)->x(), qRound(240 * f->host.twips().dpi() / 1440.0));
    }

    void sizableFormIsToldItsSizeWhenShownAndResized() {
        qttest::BareFace face;
        forms::Form form(face.rt, "frmSizable");
        form.Border = forms::BorderStyle::Sizable;
        form.ClientWidth = 4800;
        form.ClientHeight = 3600;
        int resizes = 0;
        form.Resize = [&] { ++resizes; };
        form.announce();
        face.host.dispatch([&] { form.setVisible(true); });
        const qtface::Twips& tw = face.host.twips();
        QWidget* top = face.host.window(form)->window();
        QCOMPARE(face.host.window(form)->client()->size(), QSize(tw.px(4800), tw.px(3600)));
        for (int round = 1; round <= 2; ++round) {
            if (round == 2) top->resize(top->width() + 30, top->height() + 15);
            QTRY_COMPARE(resizes, round);
            QCOMPARE(form.Width(), tw.twips(top->frameGeometry().width()));
            QCOMPARE(form.Height(), tw.twips(top->frameGeometry().height()));
        }
        form.retire();
    }

    // Cells of the fixed rows and columns show the fixed colour unless given
    // one of their own, and only while the grid keeps them fixed.
    void gridModelShowsFixedColoursAndNothingOnceRetired() {
        qttest::BareFace face;
        forms::Form form(face.rt, "frmGrid");
        forms::Grid grid(form, nullptr, "grdGrid");
        grid.move(120, 120, 5000, 3000);
        grid.setCols(5);
        grid.setRows(50);
        grid.setFixedRows(1);
        grid.setFixedCols(1);
        form.announce();
        face.host.dispatch([&] {
            grid.setRow(2);
            grid.setCol(3);
            grid.setCellBackColor(0x000000FF);
        });
        auto* model = face.w<qtface::GridView>(grid)->gridModel();
        auto back = [&](int r, int c) { return model->index(r, c).data(Qt::BackgroundRole).value<QColor>(); };
        const QColor fixed = qtface::toQColor(grid.BackColorFixed, QApplication::palette());
        QVERIFY(back(0, 2) == fixed && back(3, 0) == fixed && back(2, 3) == QColor(255, 0, 0));
        face.host.dispatch([&] { grid.setFixedRows(0), grid.setFixedCols(0); });
        const QColor plain = qtface::toQColor(grid.BackColor(), QApplication::palette());
        QVERIFY(back(0, 2) == plain && back(3, 0) == plain);
        // From its form's end on the model reads nothing of the grid, which may go before the widgets do.
        form.retire();
        QVERIFY(!model->index(1, 1).data().isValid());
    }
};

QTEST_MAIN(FaceInputTest)
#include "face_input_test.moc"
