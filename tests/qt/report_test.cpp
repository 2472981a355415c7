// The inventory report over the real program and the real PDF port, read back
// with poppler's pdftotext and pdfimages: what the window shows, page numbers,
// pictures, and no file at all when the report is cancelled or can't be written.
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "qt/qt_pdf.h"
#include "report/frm_report.h"
#include "support/qt_harness.h"

using qttest::QtHarness;

namespace {

QString run(const QString& tool, const QStringList& args) {
    QProcess p;
    p.start(tool, args);
    p.waitForFinished(120000);
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The pages as pdftotext -layout gives them, each line with its runs of blanks made one.
QList<QStringList> pageLines(const QString& pdf) {
    QList<QStringList> pages;
    for (const QString& page : run("pdftotext", {"-layout", "-enc", "UTF-8", pdf, "-"}).split('\f')) {
        QStringList lines;
        for (const QString& line : page.split('\n')) lines << line.simplified();
        pages << lines;
    }
    if (!pages.isEmpty() && pages.back().join("").isEmpty()) pages.removeLast();
    return pages;
}

// Stops once the work done reaches the figure given (0: never), as the user's
// Cancel does; the work is told in hundredths of a category.
struct CancelAt : forms::ProgressPort {
    int at = 0, last = 0;
    void start(const std::string&, int) override {}
    bool advance(int done) override { return (last = done) < at || !at; }
    void stop() override {}
};

std::vector<std::string> cells(int i) {
    QString desc = i == 7 ? QString() : "SN " + QString::number(1000 + i);
    for (int w = 0; i == 7 && w < 60; ++w) desc += QString(" word%1").arg(w, 2, 10, QChar('0'));
    return {QString("Thing %1").arg(i, 3, 10, QChar('0')).toStdString(), "1.25", "0.004", "Hall", "1/2/2003", "", desc.toStdString()};
}

} // namespace

class ReportTest : public QObject {
    Q_OBJECT
    QTemporaryDir out_;
    qtface::QtPdfDocuments pdf_;
    CancelAt progress_;

    bool open(QtHarness& h) {
        std::vector<std::vector<std::string>> things;
        for (int i = 1; i <= 500; ++i) things.push_back(cells(i));
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        const QString jpg = out_.filePath("jack.jpg");
        image.save(jpg);
        // Jack's picture, and Wrench's that is no picture at all.
        qmtest::writeFile(h.core.data("Car partsJack.csv"), (jpg + "\r\n").toStdString());
        qmtest::writeFile(h.core.data("Car partsWrench.csv"), (out_.filePath("none.jpg") + "\r\n").toStdString());
        h.platform.documents = &pdf_;
        h.platform.progress = &progress_;
        return h.open({{"Car parts", {{"Jack", "25.00", "20.00", "Hardware store", "3/1/1999", "3/1/2000", "SN 1234"}, {"Wrench"}}},
                       {"Everything", things}});
    }
    // The report of both categories into the output folder, as a click on OK makes it.
    QString report(QtHarness& h, const QString& name, bool viaDialog = false) {
        const QString path = out_.filePath(name);
        h.core.dialogs.saveAnswers.push_back(path.toStdString());
        h.core.dialogs.msgAnswers.push_back(forms::vbNo);
        if (viaDialog) {
            h.menuAction("Inventory Report...")->trigger();
            QtHarness::settle();
            QTest::keyClick(h.host.window(h.m().Report().form)->widgetOf(h.m().Report().lstCategories), Qt::Key_Space);
            h.host.dispatch([&] { h.m().Report().cmdOK.Click(); });
        } else {
            h.host.dispatch([&] { h.m().MakeInventoryReport({"Car parts", "Everything"}, true); });
        }
        QtHarness::settle();
        return path;
    }

private slots:
    void initTestCase() {
        if (QStandardPaths::findExecutable("pdftotext").isEmpty() || QStandardPaths::findExecutable("pdfimages").isEmpty())
            QSKIP("pdftotext or pdfimages is missing (Debian package poppler-utils)");
    }

    // Every item, the window's totals of each category and their sum, the
    // category's name, the headings and "Page N of M" on every page, the picture on its page.
    void reportShowsWhatTheWindowShows() {
        QtHarness h;
        QVERIFY(open(h));
        QStringList totals;
        for (int i = 0; i < 2; ++i) {
            h.clickListEntry(i);
            QtHarness::settle();
            totals << QString::fromStdString(h.m().Label1.Caption() + " " + h.m().txtCost.Text())
                   << QString::fromStdString(h.m().Label2.Caption() + " " + h.m().txtValue.Text());
        }
        const QString path = report(h, "both.pdf");
        QCOMPARE(QDir(out_.path()).entryList({"both*"}, QDir::Files), QStringList{"both.pdf"});
        const QList<QStringList> pages = pageLines(path);
        const int m = int(pages.size());
        QVERIFY(m > 10);
        const QString all = [&] { QStringList l; for (const auto& p : pages) l += p; return l.join('\n'); }();
        for (int k = 1; k <= m; ++k) {
            QVERIFY2(pages[k - 1].contains(QString("Page %1 of %2").arg(k).arg(m)), qPrintable(QString::number(k)));
            if (k > 1) QVERIFY(pages[k - 1].contains("Car parts") || pages[k - 1].contains("Everything"));
            if (k > 1) QVERIFY(pages[k - 1].join('|').contains("Serial Number / Description")); // the headings too
        }
        for (int i = 1; i <= 500; ++i) QVERIFY(all.contains(QString::fromStdString(cells(i)[0] + " ")));
        for (int w = 0; w < 60; ++w) QVERIFY(all.contains(QString("word%1").arg(w, 2, 10, QChar('0'))));
        for (const QString& t : totals) QVERIFY2(all.contains(t), qPrintable(t));
        // Each row's value of 0.004 is rounded away as the window rounds it.
        const auto money = [&](double x) { return QString::fromStdString(qm::MoneyText(h.currency, x)); };
        QVERIFY(pages[0].contains("Total original cost of all items: " + money(650)));
        QVERIFY(pages[0].contains("Total current value of all items: " + money(20)));
        QVERIFY(pages[0].contains("Categories: 2") && pages[0].contains("Items: 502"));
        const QStringList images = run("pdfimages", {"-list", path}).split('\n').filter(QRegularExpression("^\\s*2\\s+\\d+\\s+image"));
        QCOMPARE(images.size(), 1);
        const QStringList unreadable = all.split('\n').filter("(unreadable)"); // beside Wrench alone
        QVERIFY2(unreadable.size() == 1 && unreadable[0].startsWith("Wrench "), qPrintable(unreadable.join('|')));
        QCOMPARE(h.m().files.FreeFile(), 1); // every link file read is closed again
    }

    // Cancel, or a place that can't be written: no file, not even a half or a
    // temporary one, and the category that was open is open again.
    void cancelledOrFailedLeavesNoFile_data() {
        QTest::addColumn<int>("cancelAt");
        QTest::addColumn<int>("stopsAt"); // a category of 2 items ends at its next hundred; of 500, is told at item 256
        QTest::addColumn<QString>("name");
        QTest::newRow("cancel in the first pass") << 1 << 100 << "cancelled.pdf";
        QTest::newRow("cancel inside the 500 items") << 101 << 151 << "cancelled.pdf";
        QTest::newRow("cancel in the second pass") << 201 << 300 << "cancelled.pdf";
        QTest::newRow("no such folder") << 0 << 0 << "missing/report.pdf";
    }
    void cancelledOrFailedLeavesNoFile() {
        QFETCH(int, cancelAt);
        QFETCH(int, stopsAt);
        QFETCH(QString, name);
        QtHarness h;
        QVERIFY(open(h));
        h.clickListEntry(0);
        progress_.at = cancelAt;
        report(h, name);
        if (cancelAt) QCOMPARE(progress_.last, stopsAt);
        progress_.at = 0;
        QCOMPARE(QDir(out_.path()).entryList({"cancelled*", "missing*"}, QDir::Files | QDir::Dirs), QStringList{});
        QCOMPARE(h.m().lstCategory.Text(), std::string("Car parts"));
        QCOMPARE(h.core.dialogs.texts().size(), std::size_t(cancelAt ? 0 : 1));
    }

    // The dialog from the menu: Space on the first entry leaves it out.
    void spaceLeavesACategoryOut() {
        QtHarness h;
        QVERIFY(open(h));
        const QList<QStringList> pages = pageLines(report(h, "one.pdf", true));
        QVERIFY(!pages.isEmpty());
        QVERIFY(pages[0].contains("Categories: 1"));
        for (const QStringList& page : pages) QVERIFY(!page.contains("Car parts"));
    }
};

QTEST_MAIN(ReportTest)
#include "report_test.moc"
