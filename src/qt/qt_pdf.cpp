#include "qt/qt_pdf.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QImageReader>
#include <QLocale>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <vector>

#include "forms/failure.h"

namespace qtface {

namespace {

QString qs(const std::string& s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

class QtPdfDocument : public forms::PageDocument {
public:
    QtPdfDocument(const std::string& path, const std::string& title) : file_(qs(path)) {
        if (!file_.open(QIODevice::WriteOnly)) throw forms::Failure("can't write " + path + ": " + file_.errorString().toStdString());
        writer_ = std::make_unique<QPdfWriter>(&file_);
        writer_->setTitle(qs(title));
        writer_->setCreator(QStringLiteral("Quillmere"));
        writer_->setResolution(kDpi);
        writer_->setPageLayout(QPageLayout(QtPdfDocuments::regionalPageSize(), QPageLayout::Landscape, QMarginsF(36, 36, 36, 36)));
        if (!painter_.begin(writer_.get())) {
            file_.cancelWriting();
            throw forms::Failure("can't start the document " + path);
        }
        const QRectF area = writer_->pageLayout().paintRect(QPageLayout::Point);
        width_ = area.width();
        height_ = area.height();
        painter_.setPen(QPen(Qt::black, 0.5 * kUnit));
    }

    ~QtPdfDocument() override {
        if (painter_.isActive()) painter_.end();
        // A QSaveFile dropped without commit removes its temporary file.
    }

    double pageWidth() const override { return width_; }
    double pageHeight() const override { return height_; }

    double textWidth(const std::string& text, const forms::TextStyle& style) override {
        return metrics(style).horizontalAdvance(qs(text)) / kUnit;
    }
    double lineHeight(const forms::TextStyle& style) override { return metrics(style).lineSpacing() / kUnit; }

    void drawText(double x, double y, const std::string& text, const forms::TextStyle& style) override {
        use(style);
        painter_.drawText(QPointF(x * kUnit, y * kUnit + metrics(style).ascent()), qs(text));
    }

    bool drawPicture(const std::string& path, double x, double y, double w, double h) override {
        QImageReader reader(qs(path));
        reader.setAutoTransform(true);
        const QSize full = reader.size();
        // Read at no more than twice the box's size at 150 dpi: thumbnails, not the camera's megapixels.
        if (full.isValid()) {
            const QSize box(static_cast<int>(w * 150 / 72), static_cast<int>(h * 150 / 72));
            if (full.width() > box.width() || full.height() > box.height()) reader.setScaledSize(full.scaled(box, Qt::KeepAspectRatio));
        }
        const QImage image = reader.read();
        if (image.isNull()) return false;
        const QSizeF fit = QSizeF(image.size()).scaled(QSizeF(w, h), Qt::KeepAspectRatio);
        painter_.drawImage(QRectF(QPointF(x, y) * kUnit, fit * kUnit), image);
        return true;
    }

    void drawLine(double x1, double y1, double x2, double y2) override { painter_.drawLine(QPointF(x1, y1) * kUnit, QPointF(x2, y2) * kUnit); }

    void newPage() override {
        if (!writer_->newPage()) throw forms::Failure("can't start a new page");
    }

    void finish() override {
        if (!painter_.end()) throw forms::Failure("can't finish the document");
        writer_.reset();
        if (!file_.commit()) throw forms::Failure("can't write " + file_.fileName().toStdString() + ": " + file_.errorString().toStdString());
    }

    void abandon() override {
        if (painter_.isActive()) painter_.end();
        writer_.reset();
        file_.cancelWriting();
        file_.commit(); // cancelled: removes the temporary file and fails
    }

private:
    // The writer's dots; the document's own unit is the point.
    static constexpr int kDpi = 1200;
    static constexpr double kUnit = kDpi / 72.0;

    struct Face {
        forms::TextStyle style;
        QFont font;
        QFontMetricsF metrics; // in the writer's dots
    };
    // The few styles a document uses, each made once.
    Face& face(const forms::TextStyle& style) {
        for (auto& f : faces_)
            if (f->style.points == style.points && f->style.bold == style.bold) return *f;
        QFont font(QStringLiteral("DejaVu Sans"));
        font.setPointSizeF(style.points);
        font.setBold(style.bold);
        faces_.push_back(std::make_unique<Face>(Face{style, font, QFontMetricsF(font, writer_.get())}));
        return *faces_.back();
    }
    const QFontMetricsF& metrics(const forms::TextStyle& style) { return face(style).metrics; }
    void use(const forms::TextStyle& style) {
        Face& f = face(style);
        if (current_ != &f) painter_.setFont(f.font);
        current_ = &f;
    }

    QSaveFile file_;
    std::unique_ptr<QPdfWriter> writer_;
    QPainter painter_;
    double width_ = 0, height_ = 0;
    std::vector<std::unique_ptr<Face>> faces_;
    Face* current_ = nullptr;
};

} // namespace

QPageSize QtPdfDocuments::regionalPageSize() {
    return QPageSize(QLocale::system().measurementSystem() == QLocale::ImperialUSSystem ? QPageSize::Letter : QPageSize::A4);
}

std::unique_ptr<forms::PageDocument> QtPdfDocuments::beginPdf(const std::string& path, const std::string& title) {
    return std::make_unique<QtPdfDocument>(path, title);
}

} // namespace qtface
