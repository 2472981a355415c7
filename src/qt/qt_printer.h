#pragma once
#include <QString>
#include <functional>
#include <string>
#include <vector>

#include "forms/ports.h"

namespace qtface {

// A plain text printer: lines of text down the page of the default printer, a
// new page when a line doesn't fit. Where there is no printer, the document is
// written as a PDF into the user's documents folder and handed to openPdf (by
// default the desktop's viewer). A job is named after its first line, its
// title, or after the fallback name when that line is empty.
class QtPrinter : public forms::PrinterPort {
public:
    using PdfOpener = std::function<void(const QString& path)>;
    explicit QtPrinter(std::string fallbackName, PdfOpener openPdf = openWithDesktop);

    void Print(const std::string& text, bool openEnd) override;
    void EndDoc() override;

    // Where the last job went: a printer's name or a PDF file.
    const QString& lastOutput() const { return lastOutput_; }

    // The job's name as a file name: no "/" (written as U+2215), no control
    // characters, not empty, not longer than a file name may be with " (n).pdf".
    QString jobName(const std::string& title) const;

    static void openWithDesktop(const QString& path);

private:
    QString pdfPath(const QString& name) const;
    std::string fallbackName_;
    PdfOpener openPdf_;
    std::vector<std::string> lines_;
    bool lineOpen_ = false;
    bool pending_ = false;
    QString lastOutput_;
};

} // namespace qtface
