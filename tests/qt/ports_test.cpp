// The ports done with Qt: message and input boxes, the file filter, pictures,
// the printer's PDF fallback, the program's end and the system information
// program, and the signals that end the program.
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QInputDialog>
#include <QMessageBox>
#include <QPrinterInfo>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <csignal>

#include "forms/failure.h"
#include "forms/runtime.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_pictures.h"
#include "qt/qt_printer.h"
#include "qt/qt_program.h"
#include "qt/session_end.h"

using qtface::QtDialogs;

namespace {

// Runs f on the modal box once it is up.
template <class Box>
void whenShown(std::function<void(Box*)> f) {
    QTimer::singleShot(0, [f] {
        auto* box = qobject_cast<Box*>(QApplication::activeModalWidget());
        QVERIFY(box);
        f(box);
    });
}

QString readAll(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? QString::fromLatin1(f.readAll()) : QString();
}

} // namespace

class PortsTest : public QObject {
    Q_OBJECT
private slots:
    void fileFilterIsWrittenAsQtReadsIt();
    void messageBoxHasNoIconAndTheFirstButtonAsDefault();
    void messageBoxAnswersByTheButtonChosen();
    void inputBoxOpensEmptyAndCancelGivesNothing();
    void picturesKnowTheirSizeInTwips();
    void badPicturesFailAndMissingOnesSaySo();
    void printerWritesAPdfWhereThereIsNoPrinter();
    void endProgramLeavesTheLoop();
    void systemInfoStartsWhatIsOnThePath();
    void signalsAskForTheEndOnceHandlersHaveReturned();
};

void PortsTest::fileFilterIsWrittenAsQtReadsIt() {
    QCOMPARE(QtDialogs::qtFilter("Pictures|*.jpg;*.jpeg|GIF|*.gif"), QString("Pictures (*.jpg *.jpeg);;GIF (*.gif)"));
    QCOMPARE(QtDialogs::qtFilter("All files (*.*)|*.*"), QString("All files (*.*)"));
    QCOMPARE(QtDialogs::qtFilter(""), QString());
}

void PortsTest::messageBoxHasNoIconAndTheFirstButtonAsDefault() {
    int prepared = 0;
    QtDialogs dialogs([&] { ++prepared; });
    QString title, text;
    QMessageBox::Icon icon = QMessageBox::Warning;
    QList<QAbstractButton*> buttons;
    bool firstIsDefault = false;
    whenShown<QMessageBox>([&](QMessageBox* box) {
        title = box->windowTitle();
        text = box->text();
        icon = box->icon();
        buttons = box->buttons();
        firstIsDefault = box->defaultButton() == box->button(QMessageBox::Yes);
        box->defaultButton()->click();
    });
    const int answer = dialogs.MsgBox("Delete all?", forms::vbYesNo, "Quillmere");
    QCOMPARE(answer, int(forms::vbYes));
    QCOMPARE(prepared, 1);
    QCOMPARE(title, QString("Quillmere"));
    QCOMPARE(text, QString("Delete all?"));
    QCOMPARE(icon, QMessageBox::NoIcon);
    QCOMPARE(buttons.size(), 2);
    QVERIFY(firstIsDefault);
}

void PortsTest::messageBoxAnswersByTheButtonChosen() {
    QtDialogs dialogs;
    whenShown<QMessageBox>([](QMessageBox* box) { box->button(QMessageBox::No)->click(); });
    QCOMPARE(dialogs.MsgBox("Sure?", forms::vbYesNo, "T"), int(forms::vbNo));
    whenShown<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); });
    QCOMPARE(dialogs.MsgBox("Go on?", forms::vbOKCancel, "T"), int(forms::vbCancel));
    whenShown<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Return); });
    QCOMPARE(dialogs.MsgBox("Done", forms::vbOKOnly, "T"), int(forms::vbOK));
}

void PortsTest::inputBoxOpensEmptyAndCancelGivesNothing() {
    QtDialogs dialogs;
    QString startText = "x", label;
    whenShown<QInputDialog>([&](QInputDialog* d) {
        startText = d->textValue();
        label = d->labelText();
        d->setTextValue("Tools");
        d->accept();
    });
    QCOMPARE(dialogs.InputBox("Name of the category?", "Add"), std::string("Tools"));
    QCOMPARE(startText, QString());
    QCOMPARE(label, QString("Name of the category?"));
    whenShown<QInputDialog>([](QInputDialog* d) {
        d->setTextValue("typed, then cancelled");
        d->reject();
    });
    QCOMPARE(dialogs.InputBox("Name?", "Add"), std::string());
}

void PortsTest::picturesKnowTheirSizeInTwips() {
    QTemporaryDir dir;
    const QString png = dir.filePath("p.png"), jpg = dir.filePath("p.jpg");
    QImage image(48, 24, QImage::Format_RGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(png));
    QVERIFY(image.save(jpg));
    qtface::QtPictures pictures(qtface::Twips(96));
    for (const QString& path : {png, jpg}) {
        auto pic = pictures.LoadPicture(path.toStdString());
        QCOMPARE(pic->widthTwips(), 48 * 15);
        QCOMPARE(pic->heightTwips(), 24 * 15);
        auto* q = dynamic_cast<qtface::QtPicture*>(pic.get());
        QVERIFY(q);
        QCOMPARE(q->image().size(), QSize(48, 24));
    }
    auto placeholder = pictures.placeholder();
    QVERIFY(placeholder->widthTwips() > 0 && placeholder->heightTwips() > 0);
}

void PortsTest::badPicturesFailAndMissingOnesSaySo() {
    QTemporaryDir dir;
    const QString junk = dir.filePath("junk.jpg");
    QFile f(junk);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write("not a picture at all");
    f.close();
    qtface::QtPictures pictures;
    QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(dir.filePath("none.jpg").toStdString()));
    bool failed = false, notFound = false;
    try {
        pictures.LoadPicture(junk.toStdString());
    } catch (const forms::FileNotFound&) {
        notFound = true;
    } catch (const forms::Failure&) {
        failed = true;
    }
    QVERIFY(failed);
    QVERIFY(!notFound);
    QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(dir.path().toStdString()));
}

void PortsTest::printerWritesAPdfWhereThereIsNoPrinter() {
    if (!QPrinterInfo::defaultPrinter().isNull()) QSKIP("a default printer exists here");
    QTemporaryDir home;
    const QByteArray oldHome = qgetenv("HOME"), oldConfig = qgetenv("XDG_CONFIG_HOME");
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.filePath(".config").toLocal8Bit());
    qtface::QtPrinter printer("Quillmere");
    printer.EndDoc(); // nothing pending: no document
    QCOMPARE(printer.lastOutput(), QString());
    printer.Print("Category: ", true);
    printer.Print("Garage", false);
    for (int i = 0; i < 150; ++i) printer.Print("line " + std::to_string(i), false);
    printer.EndDoc();
    const QString first = printer.lastOutput();
    QCOMPARE(QFileInfo(first).fileName(), QString("Quillmere.pdf"));
    QVERIFY(first.startsWith(home.path()));
    const QString pdf = readAll(first);
    QVERIFY(pdf.startsWith("%PDF"));
    QVERIFY(pdf.count("/Type /Page\n") + pdf.count("/Type /Page ") + pdf.count("/Type /Page/") >= 2);
    printer.Print("again", false);
    printer.EndDoc();
    QCOMPARE(QFileInfo(printer.lastOutput()).fileName(), QString("Quillmere (2).pdf"));
    QVERIFY(QFileInfo::exists(first));
    qputenv("HOME", oldHome);
    if (oldConfig.isEmpty()) qunsetenv("XDG_CONFIG_HOME");
    else qputenv("XDG_CONFIG_HOME", oldConfig);
}

void PortsTest::endProgramLeavesTheLoop() {
    qtface::QtProgram program;
    QEventLoop loop;
    QTimer::singleShot(0, [&] { program.endProgram(); });
    QTimer::singleShot(5000, &loop, [&] { loop.exit(99); });
    QCOMPARE(loop.exec(), 0);
    QCOMPARE(program.ends(), 1);
    QVERIFY(program.endRequested());
}

void PortsTest::systemInfoStartsWhatIsOnThePath() {
    QTemporaryDir bin;
    const QByteArray oldPath = qgetenv("PATH");
    qputenv("PATH", bin.path().toLocal8Bit());
    qtface::QtProgram program;
    QVERIFY(!program.startSystemInfo());
    const QString marker = bin.filePath("started");
    const QString script = bin.filePath("kinfocenter");
    QFile f(script);
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(QStringLiteral("#!/bin/sh\n: > '%1'\n").arg(marker).toLocal8Bit());
    f.close();
    f.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(program.startSystemInfo());
    QTRY_VERIFY(QFileInfo::exists(marker));
    qputenv("PATH", oldPath);
}

void PortsTest::signalsAskForTheEndOnceHandlersHaveReturned() {
    forms::Runtime rt;
    int ends = 0;
    qtface::EndRequests requests(rt, [&] { ++ends; });
    ::raise(SIGTERM);
    QTRY_COMPARE(ends, 1);
    // Inside a handler the end waits for it to return.
    int inside = -1;
    rt.dispatch([&] {
        requests.request();
        inside = ends;
    });
    QCOMPARE(inside, 1);
    QTRY_COMPARE(ends, 2);
    ::raise(SIGHUP);
    QTRY_COMPARE(ends, 3);
}

QTEST_MAIN(PortsTest)
#include "ports_test.moc"
