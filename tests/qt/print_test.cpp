// Printing a category from the real window with the Qt printer, the PDF read
// back as text with pdftotext.
#include <QDir>
#include <QPrinterInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <algorithm>
#include <cmath>

#include "storage/places.h"
#include "support/qt_harness.h"

using qttest::QtHarness;

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

const QString kRule(77, '-');

// The printed lines of one item, empty cells left out, and its closing rule.
QStringList itemBlock(const std::vector<std::string>& cells) {
    static const char* const headings[] = {"Item", "Original Cost", "Current Value", "Location Purchased",
                                           "Date Purchased", "Warranty Expiration", "Serial Number / Description"};
    QStringList out;
    for (std::size_t j = 0; j < cells.size(); ++j)
        if (!cells[j].empty()) out << QString("%1: %2").arg(headings[j], QString::fromStdString(cells[j]));
    out << kRule;
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

    // Every line once, in order, as labelled lines with empty cells left out,
    // across the page breaks; each page but the last filled to its foot (give
    // or take the empty line of a cell).
    void categoryPrintsAsLabelledLinesOverPages() {
        QtHarness h(qttest::RealPorts{.printer = true});
        auto items = qttest::itemRows(40);
        items.insert(items.begin(), {{"Drill", "120.50", "80", "Shop", "2001", "2003", "SN1"},
                                     {"Saw", "", "999.99", "", "2002", "", "blade, 24 teeth"},
                                     {"", "", "", "", "", "", ""}});
        h.core.writeCategories({{"Garage", items}});
        QVERIFY(h.startAndClick(0));
        h.click(h.m().cmdPrint);

        QCOMPARE(h.core.dialogs.messages.size(), std::size_t(1));
        QCOMPARE(h.core.dialogs.messages[0].text, std::string("Category Printing."));
        const QString pdf = QDir(docs_).filePath("Garage.pdf");
        // The desktop's viewer is asked to open it; in this test nobody does.
        QCOMPARE(h.openedPdfs, std::vector<QString>{pdf});
        const QList<QStringList> pages = pdfPages(pdf);
        QVERIFY2(pages.size() >= 3, qPrintable(QString::number(pages.size())));
        // Title, rule and two empty lines lead, and each cell's line has an empty line under it.
        QCOMPARE(pages[0].mid(0, 6), (QStringList{"Garage", kRule, "", "", "Item: Drill", ""}));
        QStringList want{"Garage", kRule};
        for (const auto& item : items) want << itemBlock(item);
        QCOMPARE(nonEmpty(pages), want);
        qsizetype longest = 0;
        for (const QStringList& page : pages) longest = std::max(longest, page.size());
        for (int i = 0; i + 1 < pages.size(); ++i) QVERIFY2(pages[i].size() >= longest - 1, qPrintable(QString::number(i)));
    }

    void jobsAreNamedAfterTheCategoryAndNoneIsLost() {
        QtHarness h(qttest::RealPorts{.printer = true});
        h.core.writeIndex({"Tools/Hardware"});
        h.core.writeCategory(storage::FileStem("Tools/Hardware"), qttest::itemRows(1));
        QVERIFY(h.start());
        auto& m = h.m();

        // Nothing selected: the error is printed under an empty title, as the program's name.
        h.click(m.cmdPrint);
        const QDir docs(docs_);
        QVERIFY(docs.exists("Quillmere.pdf"));
        QCOMPARE(nonEmpty(pdfPages(docs.filePath("Quillmere.pdf"))), QStringList{kRule});
        QCOMPARE(h.core.dialogs.messages.at(0).text, std::string("Error: No category selected to print."));

        // A "/" can't stand in a file name; a second print doesn't replace the first.
        h.clickListEntry(0);
        h.click(m.cmdPrint);
        h.click(m.cmdPrint);
        const QString first = docs.filePath(QString("Tools%1Hardware.pdf").arg(QChar(0x2215)));
        const QString second = docs.filePath(QString("Tools%1Hardware (2).pdf").arg(QChar(0x2215)));
        QCOMPARE(h.openedPdfs, (std::vector<QString>{docs.filePath("Quillmere.pdf"), first, second}));
        QCOMPARE(nonEmpty(pdfPages(first)).value(0), QString("Tools/Hardware"));
        QCOMPARE(nonEmpty(pdfPages(second)), nonEmpty(pdfPages(first)));
        QCOMPARE(docs.entryList(QDir::Files).size(), 3);

        // A job with nothing printed writes nothing.
        h.qtPrinter.EndDoc();
        QCOMPARE(docs.entryList(QDir::Files).size(), 3);
    }
};

QTEST_MAIN(PrintTest)
#include "print_test.moc"
