// The ports done with Qt: message and input boxes, the file filter, pictures,
// the program's end and the system information program, and the signals that
// end the program. The printer has print_test.cpp.
#include <QBuffer>
#include <QEventLoop>
#include <QFile>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <fcntl.h>
#include <sys/stat.h>

#include <csignal>

#include "forms/failure.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_program.h"
#include "qt/session_end.h"
#include "support/qt_harness.h"

using qtface::QtDialogs;
using qttest::whenShown;

class PortsTest : public QObject {
    Q_OBJECT
private slots:
    void fileFilterIsWrittenAsQtReadsIt() {
        QCOMPARE(QtDialogs::qtFilter("Pictures|*.jpg;*.jpeg|GIF|*.gif"), QString("Pictures (*.jpg *.jpeg);;GIF (*.gif)"));
        QCOMPARE(QtDialogs::qtFilter("All files (*.*)|*.*"), QString("All files (*)")); // names without a dot too
        QCOMPARE(QtDialogs::qtFilter(""), QString());
    }

    // A message box comes up after the windows are brought up to date, with no
    // icon, the caption and text it was given and the first button as default;
    // it answers by the button chosen, Esc as Cancel.
    void messageBoxesAnswerByTheButtonChosen() {
        int prepared = 0;
        QtDialogs dialogs([&] { ++prepared; });
        QString seen;
        whenShown<QMessageBox>([&](QMessageBox* box) {
            seen = QString("%1|%2|%3|%4").arg(box->windowTitle(), box->text()).arg(box->icon()).arg(box->buttons().size());
            QVERIFY(box->defaultButton() == box->button(QMessageBox::Yes));
            box->defaultButton()->click();
        });
        QCOMPARE(dialogs.MsgBox("Delete all?", forms::vbYesNo, "Quillmere"), int(forms::vbYes));
        QCOMPARE(prepared, 1);
        QCOMPARE(seen, QString("Quillmere|Delete all?|%1|2").arg(QMessageBox::NoIcon));
        whenShown<QMessageBox>([](QMessageBox* box) { box->button(QMessageBox::No)->click(); });
        QCOMPARE(dialogs.MsgBox("Sure?", forms::vbYesNo, "T"), int(forms::vbNo));
        whenShown<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); });
        QCOMPARE(dialogs.MsgBox("Go on?", forms::vbOKCancel, "T"), int(forms::vbCancel));
        whenShown<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Return); });
        QCOMPARE(dialogs.MsgBox("Done", forms::vbOKOnly, "T"), int(forms::vbOK));
        // An input box shows its title and prompt, empty; it answers what was typed, or nothing on Cancel.
        for (bool ok : {true, false}) {
            whenShown<QInputDialog>([&](QInputDialog* d) {
                seen = d->windowTitle() + "|" + d->labelText() + "|" + d->textValue();
                QTest::keyClicks(d->findChild<QLineEdit*>(), "Attic");
                QTest::keyClick(d->findChild<QLineEdit*>(), ok ? Qt::Key_Return : Qt::Key_Escape);
            });
            QCOMPARE(dialogs.InputBox("Name of the category?", "Add Category"), std::string(ok ? "Attic" : ""));
            QCOMPARE(seen, QString("Add Category|Name of the category?|"));
        }
        QCOMPARE(prepared, 6);
    }

    // Pictures know their size in twips; a file that is no picture fails as
    // such, a missing one (or a folder) as not found.
    void picturesKnowTheirSizeAndBadOnesFail() {
        QTemporaryDir dir;
        const QString png = dir.filePath("p.png"), jpg = dir.filePath("p.jpg"), junk = dir.filePath("junk.jpg");
        QImage image(48, 24, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(png) && image.save(jpg));
        qtface::QtPictures pictures(qtface::Twips(96));
        for (const QString& path : {png, jpg}) {
            auto pic = pictures.LoadPicture(path.toStdString());
            QCOMPARE(QSize(pic->widthTwips(), pic->heightTwips()), QSize(48 * 15, 24 * 15));
            QCOMPARE(dynamic_cast<qtface::QtPicture&>(*pic).image().size(), QSize(48, 24));
        }
        auto placeholder = pictures.placeholder();
        QVERIFY(placeholder->widthTwips() > 0 && placeholder->heightTwips() > 0);

        QFile f(junk);
        QVERIFY(f.open(QIODevice::WriteOnly) && f.write("not a picture at all") > 0);
        f.close();
        QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(dir.filePath("none.jpg").toStdString()));
        QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(dir.path().toStdString()));
        bool failed = false, notFound = false;
        try {
            pictures.LoadPicture(junk.toStdString());
        } catch (const forms::FileNotFound&) {
            notFound = true;
        } catch (const forms::Failure&) {
            failed = true;
        }
        QVERIFY(failed && !notFound);
    }

    // Every switch loads the stock picture: it comes from memory while its file
    // is untouched, and any change shows at the next load, even one written in
    // place with its time set back; times too recent to prove anything are not trusted.
    void aPictureIsDecodedAgainWhenItsFileChanges() {
        QTemporaryDir dir;
        const QString path = dir.filePath("NoPic.jpg");
        auto write = [&](Qt::GlobalColor color) { // the same size whatever the colour, and the same file
            QImage image(16, 8, QImage::Format_RGB32);
            image.fill(color);
            QByteArray bytes;
            QBuffer buffer(&bytes);
            image.save(&buffer, "BMP");
            QFile f(path);
            return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
        };
        qtface::QtPictures pictures;
        auto colour = [&] { return static_cast<qtface::QtPicture&>(*pictures.LoadPicture(path.toStdString())).image().pixelColor(0, 0); };
        QVERIFY(write(Qt::red));
        QTest::qWait(250); // both file times settle
        QCOMPARE(colour(), QColor(Qt::red));
        QCOMPARE(colour(), QColor(Qt::red));
        QCOMPARE(pictures.decodes(), 1);
        struct stat before {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &before), 0);
        QVERIFY(write(Qt::blue));
        const timespec times[2] = {{0, UTIME_OMIT}, before.st_mtim};
        QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        QCOMPARE(colour(), QColor(Qt::blue));
        QCOMPARE(colour(), QColor(Qt::blue));
        QCOMPARE(pictures.decodes(), 3);
        QVERIFY(QFile::remove(path));
        QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(path.toStdString()));
    }

    void systemInfoStartsWhatIsOnThePath() {
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

    // SIGTERM, SIGHUP and a request from inside a handler each end the program,
    // inside a handler only once it has returned. The end leaves the running
    // loop (once: Qt runs no loop after it, so the others are counted).
    void signalsEndTheProgramOnceHandlersHaveReturned() {
        forms::Runtime rt;
        qtface::QtProgram program;
        qtface::EndRequests requests(rt, [&] { program.endProgram(); });
        QEventLoop loop;
        QTimer::singleShot(0, [] { ::raise(SIGTERM); });
        QTimer::singleShot(5000, &loop, [&] { loop.exit(99); });
        QCOMPARE(loop.exec(), 0);
        QCOMPARE(program.ends(), 1);
        int inside = -1;
        rt.dispatch([&] {
            requests.request();
            inside = program.ends();
        });
        QCOMPARE(inside, 1);
        QTRY_COMPARE(program.ends(), 2);
        ::raise(SIGHUP);
        QTRY_COMPARE(program.ends(), 3);
        QVERIFY(program.endRequested());
    }
};

QTEST_MAIN(PortsTest)
#include "ports_test.moc"
