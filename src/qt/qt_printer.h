#pragma once
#include <QString>
#include <string>
#include <vector>

#include "forms/ports.h"

namespace qtface {

// A plain text printer: lines of text down the page of the default printer, a
// new page when a line doesn't fit. Where there is no printer, the document is
// written as a PDF named after the document into the user's documents folder.
class QtPrinter : public forms::PrinterPort {
public:
    explicit QtPrinter(std::string documentName);

    void Print(const std::string& text, bool openEnd) override;
    void EndDoc() override;

    // Where the last job went: a printer's name or a PDF file.
    const QString& lastOutput() const { return lastOutput_; }

private:
    QString pdfPath() const;
    std::string documentName_;
    std::vector<std::string> lines_;
    bool lineOpen_ = false;
    bool pending_ = false;
    QString lastOutput_;
};

} // namespace qtface
