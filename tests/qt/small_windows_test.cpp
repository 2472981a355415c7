// The six small windows in the real face: each opens from its menu entry (the
// picture window from its check box, the import's preview once a file is chosen) as a window of its own with its caption,
// goes away by its button and by the window manager's close, and leaves the
// main window as usable as before.
#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <filesystem>

#include "appearance/frm_properties.h"
#include "find/frm_find.h"
#include "infowindows/frm_about.h"
#include "import/frm_import.h"
#include "infowindows/frm_how.h"
#include "pictures/frm_pic.h"
#include "report/frm_report.h"
#include "support/qt_harness.h"

using qttest::QtHarness;

namespace {

struct SmallWindow {
    const char *name, *caption;
    const char* menuEntry; // nullptr: opened by chkPic
    std::function<forms::Form*(qm::frmMain&)> form; // nothing while it isn't loaded
    const char* closeButton;
    bool stays; // hidden, not unloaded, when closed
};

template <class W> forms::Form* formOf(W* w) { return w ? &w->form : nullptr; }

const SmallWindow kWindows[] = {
    {"frmPic", "Item Picture", nullptr, [](qm::frmMain& m) { return m.hasPic() ? &m.Pic().form : nullptr; }, "cmdClose", true},
    {"frmProperties", "Properties", "Properties", [](qm::frmMain& m) { return formOf(m.propertiesIfLoaded()); }, "cmdChange", false},
    {"frmHow", "How does Quillmere work?", "Contents", [](qm::frmMain& m) { return formOf(m.howIfLoaded()); }, "cmdClose", false},
    {"frmAbout", "About Quillmere", "About Quillmere", [](qm::frmMain& m) { return formOf(m.aboutIfLoaded()); }, "cmdOK", false},
    {"frmContact", "Contact Info", "Contact Me", [](qm::frmMain& m) { return formOf(m.contactIfLoaded()); }, "cmdOK", false},
    {"frmFind", "Find", "Find...", [](qm::frmMain& m) { return formOf(m.findIfLoaded()); }, "cmdClose", false},
    {"frmImport", "Import Spreadsheet", "Import Spreadsheet...", [](qm::frmMain& m) { return formOf(m.importIfLoaded()); }, "cmdCancel", false},
    {"frmReport", "Inventory Report", "Inventory Report...", [](qm::frmMain& m) { return formOf(m.reportIfLoaded()); }, "cmdCancel", false},
};

void open(QtHarness& h, const SmallWindow& w) {
    if (w.name == std::string("frmImport")) {
        qmtest::writeFile(h.core.floppy("Sheet.csv"), "Item,Colour\nJack,red\n");
        h.core.dialogs.openAnswers.push_back(h.core.floppy("Sheet.csv").string());
    }
    if (w.menuEntry) h.menuAction(w.menuEntry)->trigger();
    else h.click(h.m().chkPic);
    QtHarness::settle();
}

// The window of the form, shown as a top-level window of its own with its caption.
QWidget* shownWindow(QtHarness& h, const SmallWindow& w) {
    forms::Form* form = w.form(h.m());
    if (!form) return nullptr;
    qtface::FormWindow* fw = h.host.window(*form);
    if (!fw || !fw->isShown()) return nullptr;
    QWidget* top = fw->window();
    return top->isWindow() && top != h.topWidget() ? top : nullptr;
}

// The application's icon as the program sets it at its start.
const QString kIcon = QString::fromStdString((std::filesystem::path(QT_TESTCASE_SOURCEDIR) / "../../packaging/quillmere.png").string());

} // namespace

class SmallWindowsTest : public QObject {
    Q_OBJECT
private slots:
    // Each colour button of the Properties window asks for a colour and its
    // swatch paints it, red, green and blue each in its place.
    void colourButtonsPaintTheirSwatches() {
        QtHarness h;
        QVERIFY(h.start());
        h.menuAction("Properties")->trigger();
        QtHarness::settle();
        auto& p = *h.m().propertiesIfLoaded();
        const std::pair<forms::Button*, forms::Shape*> buttons[] = {{&p.cmdHColor, &p.shpCatHead}, {&p.cmdSelected, &p.shpCell},
            {&p.cmdCatColor, &p.shpCatList}, {&p.cmdCellText, &p.shpCellText}, {&p.cmdListText, &p.shpListText}};
        int n = 0;
        for (auto [button, swatch] : buttons) {
            const forms::Color chosen = 0x00123456 + 0x10 * ++n;
            h.core.dialogs.colorAnswers.push_back(chosen);
            QTest::mouseClick(h.host.window(p.form)->widgetOf(*button), Qt::LeftButton);
            QtHarness::settle();
            QWidget* w = h.host.window(p.form)->widgetOf(*swatch);
            const QColor shown(0x56 + 0x10 * n, 0x34, 0x12);
            QCOMPARE(w->grab().toImage().pixelColor(w->rect().center()), shown);
            // Named for a reader by its setting and the colour it shows.
            QVERIFY(w->accessibleName().startsWith(QString::fromStdString(button->Caption + ": ")) && w->accessibleName().endsWith(shown.name().toUpper().mid(1) + ")"));
        }
    }

    // One program through all six: each opened twice (a window that was
    // unloaded comes back afresh), closed by its button, then by the window manager.
    void opensAndClosesAgain() {
        QtHarness h;
        QApplication::setWindowIcon(QIcon(kIcon));
        h.core.writeCategories({{"Garage", qmtest::numberedItems(2)}, {"Kitchen", {}}});
        // The help page as the program ships it.
        std::filesystem::copy_file(std::filesystem::path(QT_TESTCASE_SOURCEDIR) / "../../data/Readme.htm",
                                   h.core.data("Readme.htm"));
        QVERIFY(h.start());
        auto& m = h.m();
        for (const SmallWindow& w : kWindows) {
            // Closed by its button, by the window manager, by Esc.
            for (int way : {0, 1, 2}) {
                open(h, w);
                QPointer<QWidget> top = shownWindow(h, w);
                QVERIFY2(top, w.name);
                QCOMPARE(top->windowTitle(), QString(w.caption));
                QCOMPARE(QAccessible::queryAccessibleInterface(top)->role(), QAccessible::Dialog);
                QVERIFY(h.topWidget()->isVisible());
                if (auto* browser = top->findChild<QTextBrowser*>())
                    QVERIFY(browser->toPlainText().contains("Where your data lives"));
                if (auto* icon = dynamic_cast<forms::PictureBox*>(w.form(m)->find("picIcon"))) {
                    // The application's icon, drawn in the box.
                    const auto* shown = dynamic_cast<const qtface::QtPicture*>(icon->picture().get());
                    const QImage expected = QIcon(kIcon).pixmap(48, 48).toImage();
                    QVERIFY(shown && shown->image().convertToFormat(expected.format()) == expected);
                    const QImage drawn = h.host.window(*w.form(m))->widgetOf(*icon)->grab().toImage();
                    QCOMPARE(drawn.pixelColor(24, 24), expected.pixelColor(24, 24)); // an opaque pixel of it
                }

                if (way == 2) QTest::keyClick(top, Qt::Key_Escape);
                else if (way == 1) top->close();
                else QTest::mouseClick(h.host.window(*w.form(m))->widgetOf(*w.form(m)->find(w.closeButton)), Qt::LeftButton);
                QtHarness::settle();
                QVERIFY2(!top || !top->isVisible(), w.name);
                QVERIFY(!shownWindow(h, w));
                QCOMPARE(w.form(m) != nullptr, w.stays);
                if (w.stays) {
                    QCOMPARE(m.chkPic.Value(), 0);
                    QVERIFY(!h.widgetAs<QCheckBox>(m.chkPic)->isChecked());
                }
            }
        }

        // The main window goes on working: a click opens a category.
        h.clickListEntry(0);
        QtHarness::settle();
        QCOMPARE(m.CurrentCategory.value_or(""), std::string("Garage"));
        QVERIFY(h.grid()->isVisible());
        QCOMPARE(h.core.runtime.focused(), &m.T1);
    }

    // The contact window at its designed size; whatever font the desktop gives,
    // each caption and value shows whole on one line, and the values stand in one
    // column behind the captions.
    void contactValuesStandOnOneLineInsideTheWindow() {
        QtHarness h;
        QVERIFY(h.start());
        h.menuAction("Contact Me")->trigger();
        QtHarness::settle();
        qm::frmContact& c = *h.m().contactIfLoaded();
        qtface::FormWindow* fw = h.host.window(c.form);
        QWidget* client = fw->client();
        QCOMPARE(client->size(), QSize(qttest::pixels(5730), qttest::pixels(2730)));
        QCOMPARE(fw->widgetOf(c.cmdOK)->mapTo(client, QPoint(0, 0)).x(), qttest::pixels(2040));
        const int column = fw->widgetOf(c.lblAuthorValue)->x();
        using Line = std::pair<forms::Label*, forms::Label*>;
        for (auto [caption, value] : {Line{&c.lblAuthor, &c.lblAuthorValue}, Line{&c.lblProgrammer, &c.lblProgrammerValue},
                                      Line{&c.lblEmail, &c.lblEmailValue}, Line{&c.lblSecEmail, &c.lblSecEmailValue}}) {
            QCOMPARE(fw->widgetOf(*value)->x(), column);
            QVERIFY2(fw->widgetOf(*caption)->geometry().right() < column, caption->name().c_str());
            for (forms::Label* l : {caption, value}) {
                auto* label = qobject_cast<QLabel*>(fw->widgetOf(*l));
                QVERIFY(label);
                const QFontMetrics fm(label->font());
                QVERIFY2(label->height() >= fm.height() && label->height() < 2 * fm.lineSpacing(), l->name().c_str());
                QVERIFY2(label->width() >= fm.horizontalAdvance(label->text()), l->name().c_str());
                const QRect inClient(label->mapTo(client, QPoint(0, 0)), label->size());
                QVERIFY2(client->rect().contains(inClient), l->name().c_str());
            }
        }
    }

    // A picture linked to an item sizes the picture window to it, shown or hidden:
    // the form reads the size the window really took, and both buttons lie inside
    // the window, where a real click reaches them.
    void pictureWindowFitsAroundThePicture() {
        QTemporaryDir dir;
        auto picture = [&](int width, int height) {
            QImage image(width, height, QImage::Format_RGB32);
            image.fill(QColor(0x40, 0x90, 0xA0));
            const QString path = dir.filePath(QStringLiteral("%1x%2.png").arg(width).arg(height));
            image.save(path);
            return path.toStdString();
        };
        QtHarness h;
        h.core.writeCategories({{"Garage", qmtest::numberedItems(2)}});
        qmtest::writeFile(h.core.data("GarageItem 1.csv"), picture(900, 700) + "\r\n");
        QVERIFY(h.startAndClick(0));
        qm::frmPic& pic = h.m().Pic();
        qtface::FormWindow* fw = h.host.window(pic.form);
        QWidget* top = fw->window();
        auto fits = [&](QSize size) {
            const QSize outer = top->frameGeometry().size();
            bool ok = pic.form.Width() == h.host.twips().twips(outer.width()) && pic.form.Height() == h.host.twips().twips(outer.height());
            ok = ok && fw->widgetOf(pic.picItem)->size() == size;
            for (const forms::Control* c : std::initializer_list<const forms::Control*>{&pic.picItem, &pic.cmdAddPic, &pic.cmdClose}) {
                QWidget* w = fw->widgetOf(*c);
                ok = ok && top->rect().contains(QRect(w->mapTo(top, QPoint(0, 0)), w->size()));
            }
            if (!ok) qWarning("window %dx%d, form %dx%d twips", outer.width(), outer.height(), pic.form.Width(), pic.form.Height());
            return ok;
        };
        auto clickIn = [&](const forms::Control& button) {
            QWidget* w = fw->widgetOf(button);
            QTest::mouseClick(top->windowHandle(), Qt::LeftButton, {}, w->mapTo(top, w->rect().center()));
            QtHarness::settle();
        };
        QTest::mouseClick(h.grid()->viewport(), Qt::LeftButton, {}, h.grid()->cellRect(1, 2).center());
        QVERIFY(!top->isVisible());
        QVERIFY(fits({900, 700})); // sized while hidden
        h.click(h.m().chkPic);
        QtHarness::settle();
        QVERIFY(top->isVisible());
        QVERIFY(fits({900, 700}));

        h.core.dialogs.openAnswers.push_back(picture(3000, 2000));
        clickIn(pic.cmdAddPic);
        QCOMPARE(h.core.dialogs.filters.size(), std::size_t(1));
        QVERIFY(fits({3000, 2000}));
        clickIn(pic.cmdClose);
        QVERIFY(!top->isVisible());
        QCOMPARE(h.m().chkPic.Value(), 0);
    }
};

QTEST_MAIN(SmallWindowsTest)
#include "small_windows_test.moc"
