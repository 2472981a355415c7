#pragma once
#include <QString>
#include <memory>
#include <string>

#include "forms/ports.h"

class QPageSize;

namespace qtface {

// PDF documents drawn with QPainter into a QPdfWriter, written to a temporary
// file beside the chosen one and renamed over it at the end (QSaveFile), so
// that a cancelled or failed document leaves nothing behind.
class QtPdfDocuments : public forms::DocumentsPort {
public:
    std::unique_ptr<forms::PageDocument> beginPdf(const std::string& path, const std::string& title) override;

    // Letter where the user's region measures in inches, else A4.
    static QPageSize regionalPageSize();
};

} // namespace qtface
