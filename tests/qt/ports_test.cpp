// The ports done with Qt: message and input boxes, the file filter, pictures,
// the program's end and the system information program, the signals that end
// the program, and the printer: with no printer here a job becomes a PDF, read
// back as text with pdftotext. What the program prints is the core tests' business.
#include <QBuffer>
#include <QColorDialog>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPrinterInfo>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <sys/stat.h>

#include <csignal>

#include "forms/failure.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_printer.h"
#include "qt/qt_program.h"
#include "qt/session_end.h"
#include "support/qt_harness.h"

using qtface::QtDialogs;
using qttest::whenShown;

namespace {

// The PDF's pages read back, each a list of lines with the empty lines in
// their places. pdftotext -layout only guesses at empty lines from the gaps,
// so the lines are rebuilt from the words' positions (pdftotext -tsv): the
// printer's lines stand at a fixed pitch from the top of each page.
QList<QStringList> pdfPages(const QString& pdf) {
    QProcess p;
    p.start("pdftotext", {"-tsv", "-enc", "UTF-8", pdf, "-"});
    if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
    struct Word { int page; double y; QString text; };
    QList<Word> words; // in reading order, page after page
    int pages = 0;
    for (const QString& row : QString::fromUtf8(p.readAllStandardOutput()).split('\n')) {
        const QStringList f = row.split('\t'); // level, page, ..., top (7), ..., text (11)
        if (f.size() != 12) continue;
        if (f[0] == "1") ++pages;
        if (f[0] == "5") words.append({f[1].toInt(), f[7].toDouble(), f[11]});
    }
    // The pitch is the smallest step between two lines; the top, the first line of all.
    double top = 1e9, pitch = 1e9;
    for (int i = 0; i < words.size(); ++i) {
        top = std::min(top, words[i].y);
        if (i > 0 && words[i].page == words[i - 1].page && words[i].y - words[i - 1].y > 0.5) pitch = std::min(pitch, words[i].y - words[i - 1].y);
    }
    QList<QStringList> out(pages);
    for (const Word& w : words) {
        QStringList& lines = out[w.page - 1];
        const int line = int(std::lround((w.y - top) / pitch));
        while (lines.size() <= line) lines << QString();
        lines[line] += (lines[line].isEmpty() ? "" : " ") + w.text;
    }
    return out;
}

QStringList nonEmpty(const QList<QStringList>& pages) {
    QStringList out;
    for (const QStringList& page : pages) out += page;
    out.removeAll(QString());
    return out;
}

} // namespace

class PortsTest : public QObject {
    Q_OBJECT
    QTemporaryDir home_;
    QString docs_;
    // Why no print job can become a PDF read back here ("" when one can), the
    // documents folder emptied for the next.
    QString whyNoPdf() {
        QDir(docs_).removeRecursively();
        if (!QPrinterInfo::defaultPrinter().isNull()) return "a default printer exists here: nothing would become a PDF";
        if (QStandardPaths::findExecutable("pdftotext").isEmpty())
            return "pdftotext is missing (Debian package poppler-utils): the printed PDF can't be read back";
        return {};
    }
private slots:
    // Print jobs become PDFs in the documents folder of a home of the test's own.
    void initTestCase() {
        qputenv("HOME", home_.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home_.filePath(".config").toLocal8Bit());
        docs_ = home_.filePath("Documents");
    }

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
        // A question whose safe answer is the second: Enter and a closed box both give it.
        whenShown<QMessageBox>([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Return); });
        QCOMPARE(dialogs.MsgBox("End?", forms::vbYesNo | forms::vbDefaultButton2, "T"), int(forms::vbNo));
        whenShown<QMessageBox>([](QMessageBox* box) { box->close(); });
        QCOMPARE(dialogs.MsgBox("End?", forms::vbYesNo | forms::vbDefaultButton2, "T"), int(forms::vbNo));
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
        QCOMPARE(prepared, 8);
    }

    // The colour dialog answers the colour chosen, red in the low byte, or nothing on Cancel.
    void colourDialogAnswersTheChosenColour() {
        QtDialogs dialogs;
        whenShown<QColorDialog>([](QColorDialog* d) {
            d->setCurrentColor(QColor(0x56, 0x34, 0x12));
            d->accept();
        });
        QVERIFY(dialogs.ShowColor() == std::optional<forms::Color>(0x00123456));
        whenShown<QColorDialog>([](QColorDialog* d) { d->reject(); });
        QVERIFY(!dialogs.ShowColor());
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

        qmtest::writeFile(junk.toStdString(), "not a picture at all");
        QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(dir.filePath("none.jpg").toStdString()));
        QVERIFY_THROWS_EXCEPTION(forms::FileNotFound, pictures.LoadPicture(dir.path().toStdString()));
        try {
            pictures.LoadPicture(junk.toStdString());
            QFAIL("a file that is no picture was loaded");
        } catch (const forms::FileNotFound&) {
            QFAIL("a file that is no picture failed as not found");
        } catch (const forms::Failure&) {
        }
    }

    // Every switch loads the stock picture: it comes from memory while its file
    // is untouched, and any change shows at the next load, even one written in
    // place with its time set back; times too recent to prove anything are not trusted.
    void aPictureIsDecodedAgainWhenItsFileChanges() {
        QTemporaryDir dir;
        const QString path = dir.filePath("NoPic.jpg");
        auto write = [&](Qt::GlobalColor color, const QString& to) { // the same size whatever the colour
            QImage image(16, 8, QImage::Format_RGB32);
            image.fill(color);
            QByteArray bytes;
            QBuffer buffer(&bytes);
            image.save(&buffer, "BMP");
            QFile f(to);
            return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
        };
        qtface::QtPictures pictures;
        auto colourOf = [&](const QString& p) { return static_cast<qtface::QtPicture&>(*pictures.LoadPicture(p.toStdString())).image().pixelColor(0, 0); };
        auto colour = [&] { return colourOf(path); };
        const QString other = dir.filePath("Other.bmp");
        QVERIFY(write(Qt::red, path) && write(Qt::green, other));
        QTest::qWait(250); // both file times settle
        QCOMPARE(colour(), QColor(Qt::red));
        QCOMPARE(colour(), QColor(Qt::red));
        // Another picture between: both are kept, and the first is found again as it was.
        QCOMPARE(colourOf(other), QColor(Qt::green));
        QCOMPARE(colour(), QColor(Qt::red));
        QCOMPARE(pictures.decodes(), 2);
        struct stat before {};
        QCOMPARE(::stat(QFile::encodeName(path).constData(), &before), 0);
        QVERIFY(write(Qt::blue, path));
        const timespec times[2] = {{0, UTIME_OMIT}, before.st_mtim};
        QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        QCOMPARE(colour(), QColor(Qt::blue));
        QCOMPARE(colour(), QColor(Qt::blue));
        QCOMPARE(pictures.decodes(), 4);
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
        qmtest::writeFile(script.toStdString(), "#!/bin/sh\n: > '" + marker.toStdString() + "'\n");
        QFile::setPermissions(script, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
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

    // Every line once, in order, the empty ones in their places, a line printed
    // in pieces as one; each page but the last filled to its foot (give or take
    // an empty line).
    void linesStandInOrderOverPages() {
        if (const QString why = whyNoPdf(); !why.isEmpty()) QSKIP(qPrintable(why));
        std::vector<QString> opened;
        qtface::QtPrinter printer("Quillmere", [&](const QString& pdf) { opened.push_back(pdf); });
        QStringList want{"Garage", "", "", "Item: Drill", ""};
        for (int i = 0; i < 200; ++i) want << QString("Line %1").arg(i) << (i % 2 ? "" : "-----");
        for (const QString& line : want)
            if (line.startsWith("Item: ")) {
                printer.Print("Item: ", true);
                printer.Print(line.mid(6).toStdString(), false);
            } else {
                printer.Print(line.toStdString(), false);
            }
        printer.EndDoc();
        const QString pdf = QDir(docs_).filePath("Garage.pdf");
        QCOMPARE(opened, std::vector<QString>{pdf}); // the desktop's viewer is asked to open it
        const QList<QStringList> pages = pdfPages(pdf);
        QVERIFY2(pages.size() >= 3, qPrintable(QString::number(pages.size())));
        QCOMPARE(pages[0].mid(0, 5), want.mid(0, 5));
        QCOMPARE(nonEmpty(pages), nonEmpty({want}));
        qsizetype longest = 0;
        for (const QStringList& page : pages) longest = std::max(longest, page.size());
        for (int i = 0; i + 1 < pages.size(); ++i) QVERIFY2(pages[i].size() >= longest - 1, qPrintable(QString::number(i)));
    }

    // Named after the first line: no "/" in a file name, the program's name for
    // none, at most 240 bytes and whole characters; a second job doesn't
    // replace the first, and a job with nothing printed writes nothing.
    void jobsAreNamedAfterTheirTitleAndNoneIsLost() {
        if (const QString why = whyNoPdf(); !why.isEmpty()) QSKIP(qPrintable(why));
        std::vector<QString> opened;
        qtface::QtPrinter printer("Quillmere", [&](const QString& pdf) { opened.push_back(pdf); });
        auto job = [&](const QString& title) {
            printer.Print(title.toStdString(), false);
            printer.Print("x", false);
            printer.EndDoc();
        };
        const QString slash = QString("Tools%1Hardware").arg(QChar(0x2215)), smiles = QString("\U0001F600").repeated(100);
        for (const QString& title : {QString(" \t"), QString("Tools/Hardware"), QString("Tools/Hardware"), smiles}) job(title);
        printer.EndDoc();
        const QDir docs(docs_);
        QCOMPARE(opened, (std::vector<QString>{docs.filePath("Quillmere.pdf"), docs.filePath(slash + ".pdf"),
                                               docs.filePath(slash + " (2).pdf"), docs.filePath(smiles.left(120) + ".pdf")}));
        QCOMPARE(nonEmpty(pdfPages(opened[2])), (QStringList{"Tools/Hardware", "x"}));
        QCOMPARE(docs.entryList(QDir::Files).size(), 4);
    }
};

QTEST_MAIN(PortsTest)
#include "ports_test.moc"
