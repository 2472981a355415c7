#include "qt/qt_printer.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QStandardPaths>
#include <QUrl>

#include "forms/failure.h"

namespace qtface {

QtPrinter::QtPrinter(std::string fallbackName, PdfOpener openPdf)
    : fallbackName_(std::move(fallbackName)), openPdf_(std::move(openPdf)) {}

void QtPrinter::openWithDesktop(const QString& path) { QDesktopServices::openUrl(QUrl::fromLocalFile(path)); }

QString QtPrinter::jobName(const std::string& title) const {
    QString name;
    for (const QChar c : QString::fromStdString(title).trimmed()) {
        if (c == QLatin1Char('/')) name += QChar(0x2215);
        else if (c.category() != QChar::Other_Control) name += c;
    }
    // Room for " (999).pdf" within the 255 bytes of a file name.
    while (name.toUtf8().size() > 240) {
        name.chop(1);
        if (!name.isEmpty() && name.back().isHighSurrogate()) name.chop(1);
    }
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..")) return QString::fromStdString(fallbackName_);
    return name;
}

void QtPrinter::Print(const std::string& text, bool openEnd) {
    if (!lineOpen_) lines_.emplace_back();
    lines_.back() += text;
    lineOpen_ = openEnd;
    pending_ = true;
}

// "<name>.pdf", or "<name> (2).pdf" and on, so that no earlier print is lost.
QString QtPrinter::pdfPath(const QString& base) const {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty()) folder = QDir::homePath();
    QDir().mkpath(folder);
    QString path = QDir(folder).filePath(base + QStringLiteral(".pdf"));
    for (int n = 2; QFileInfo::exists(path); ++n) path = QDir(folder).filePath(QStringLiteral("%1 (%2).pdf").arg(base).arg(n));
    return path;
}

void QtPrinter::EndDoc() {
    if (!pending_) return;
    std::vector<std::string> lines;
    lines.swap(lines_);
    pending_ = false;
    lineOpen_ = false;

    const QString name = jobName(lines.empty() ? std::string() : lines.front());
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(name);
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (!info.isNull()) {
        printer.setPrinterName(info.printerName());
        lastOutput_ = info.printerName();
    } else {
        printer.setOutputFormat(QPrinter::PdfFormat);
        lastOutput_ = pdfPath(name);
        printer.setOutputFileName(lastOutput_);
    }
    QPainter painter;
    if (!painter.begin(&printer)) throw forms::Failure("printer error: can't start " + lastOutput_.toStdString());
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(10);
    painter.setFont(font);
    const QFontMetrics fm(font, &printer);
    const int pageHeight = printer.pageLayout().paintRectPixels(printer.resolution()).height();
    int y = 0;
    for (const std::string& line : lines) {
        if (y > 0 && y + fm.lineSpacing() > pageHeight) {
            printer.newPage();
            y = 0;
        }
        painter.drawText(0, y + fm.ascent(), QString::fromStdString(line));
        y += fm.lineSpacing();
    }
    if (!painter.end()) throw forms::Failure("printer error: can't finish " + lastOutput_.toStdString());
    if (printer.outputFormat() == QPrinter::PdfFormat && openPdf_) openPdf_(lastOutput_);
}

} // namespace qtface
