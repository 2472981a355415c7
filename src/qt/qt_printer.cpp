#include "qt/qt_printer.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <QStandardPaths>

#include "forms/failure.h"

namespace qtface {

QtPrinter::QtPrinter(std::string documentName) : documentName_(std::move(documentName)) {}

void QtPrinter::Print(const std::string& text, bool openEnd) {
    if (!lineOpen_) lines_.emplace_back();
    lines_.back() += text;
    lineOpen_ = openEnd;
    pending_ = true;
}

// "<name>.pdf", or "<name> (2).pdf" and on, so that no earlier print is lost.
QString QtPrinter::pdfPath() const {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty()) folder = QDir::homePath();
    QDir().mkpath(folder);
    const QString base = QString::fromStdString(documentName_);
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

    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(QString::fromStdString(documentName_));
    const QPrinterInfo info = QPrinterInfo::defaultPrinter();
    if (!info.isNull()) {
        printer.setPrinterName(info.printerName());
        lastOutput_ = info.printerName();
    } else {
        printer.setOutputFormat(QPrinter::PdfFormat);
        lastOutput_ = pdfPath();
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
    painter.end();
}

} // namespace qtface
