// The Qt printer: with no printer here a job becomes a PDF, read back as text
// with pdftotext. What the program prints is the core tests' business.
#include <QDir>
#include <QPrinterInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>

#include "qt/qt_printer.h"

namespace {

// The PDF's pages read back, each a list of lines with the empty lines in
// their places. pdftotext -layout only guesses at empty lines from the gaps,
// so the lines are rebuilt from the words' positions (pdftotext -bbox): the
// printer's lines stand at a fixed pitch from the top of each page.
QList<QStringList> pdfPages(const QString& pdf) {
    QProcess p;
    p.start("pdftotext", {"-bbox", "-enc", "UTF-8", pdf, "-"});
    if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
    const QString html = QString::fromUtf8(p.readAllStandardOutput());
    struct Word { double y; QString text; };
    QList<QList<Word>> pages;
    static const QRegularExpression tag(R"re(<page |<word [^>]*yMin="([0-9.]+)"[^>]*>([^<]*)</word>)re");
    for (auto it = tag.globalMatch(html); it.hasNext();) {
        const auto m = it.next();
        if (m.captured(0) == "<page ") {
            pages.append(QList<Word>());
            continue;
        }
        QString text = m.captured(2);
        text.replace("&lt;", "<").replace("&gt;", ">").replace("&quot;", "\"").replace("&apos;", "'").replace("&amp;", "&");
        pages.back().append({m.captured(1).toDouble(), text});
    }
    // The pitch is the smallest step between two lines; the top, the first line of all.
    double top = 1e9, pitch = 1e9;
    for (const auto& words : pages)
        for (int i = 0; i < words.size(); ++i) {
            top = std::min(top, words[i].y);
            if (i > 0 && words[i].y - words[i - 1].y > 0.5) pitch = std::min(pitch, words[i].y - words[i - 1].y);
        }
    QList<QStringList> out;
    for (const auto& words : pages) {
        QStringList lines;
        for (const Word& w : words) {
            const int line = int(std::lround((w.y - top) / pitch));
            while (lines.size() <= line) lines << QString();
            lines[line] += (lines[line].isEmpty() ? "" : " ") + w.text;
        }
        out << lines;
    }
    return out;
}

QStringList nonEmpty(const QList<QStringList>& pages) {
    QStringList out;
    for (const QStringList& page : pages)
        for (const QString& l : page)
            if (!l.isEmpty()) out << l;
    return out;
}

} // namespace

class PrintTest : public QObject {
    Q_OBJECT
    QTemporaryDir home_;
    QString docs_;
private slots:
    // With no printer here a job becomes a PDF in the documents folder of a
    // home of the test's own.
    void initTestCase() {
        if (!QPrinterInfo::defaultPrinter().isNull()) QSKIP("a default printer exists here: nothing would become a PDF");
        if (QStandardPaths::findExecutable("pdftotext").isEmpty())
            QSKIP("pdftotext is missing (Debian package poppler-utils): the printed PDF can't be read back");
        qputenv("HOME", home_.path().toLocal8Bit());
        qputenv("XDG_CONFIG_HOME", home_.filePath(".config").toLocal8Bit());
        docs_ = home_.filePath("Documents");
    }
    void init() { QDir(docs_).removeRecursively(); }

    // Every line once, in order, the empty ones in their places, a line printed
    // in pieces as one; each page but the last filled to its foot (give or take
    // an empty line).
    void linesStandInOrderOverPages() {
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

QTEST_MAIN(PrintTest)
#include "print_test.moc"
