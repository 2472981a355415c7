#include "qt/qt_pictures.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QImageReader>
#include <QPainter>
#include <algorithm>

#include "forms/failure.h"
#include "forms/std_files.h"

namespace qtface {

QtPicture::QtPicture(QImage image, const Twips& twips)
    : image_(std::move(image)), w_(twips.twips(image_.width())), h_(twips.twips(image_.height())) {}

namespace {
constexpr std::size_t kKeptPictures = 2;
} // namespace

std::shared_ptr<forms::Picture> QtPictures::LoadPicture(const std::string& path) {
    // Taken before the decoding: a change made while it runs shows next time.
    const std::optional<forms::FileFingerprint> state = forms::fileFingerprint(path);
    if (!state) throw forms::FileNotFound(path);
    auto same = std::find_if(decoded_.begin(), decoded_.end(), [&](const Decoded& d) { return d.path == path; });
    if (same != decoded_.end()) {
        if (state->sameState(same->state)) {
            std::rotate(decoded_.begin(), same, same + 1);
            return decoded_.front().picture;
        }
        decoded_.erase(same);
    }
    QImageReader reader(QString::fromStdString(path));
    reader.setAutoTransform(true);
    QImage image = reader.read();
    ++decodes_;
    if (image.isNull()) throw forms::Failure("invalid picture: " + path + " (" + reader.errorString().toStdString() + ")");
    auto picture = std::make_shared<QtPicture>(std::move(image), twips_);
    // A time within the clock's last tick could stay the same through a
    // change: such a state proves nothing, and the file is decoded again.
    if (state->settled) {
        decoded_.insert(decoded_.begin(), Decoded{path, *state, picture});
        if (decoded_.size() > kKeptPictures) decoded_.pop_back();
    }
    return picture;
}

// A plain picture for where none can be read: a light square with a cross.
std::shared_ptr<forms::Picture> QtPictures::placeholder() {
    if (placeholder_) return placeholder_;
    const int side = twips_.px(1440);
    QImage image(side, side, QImage::Format_RGB32);
    image.fill(QColor(0xE0, 0xE0, 0xE0));
    QPainter p(&image);
    p.setPen(QColor(0x80, 0x80, 0x80));
    p.drawRect(0, 0, side - 1, side - 1);
    p.drawLine(0, 0, side - 1, side - 1);
    p.drawLine(0, side - 1, side - 1, 0);
    p.end();
    placeholder_ = std::make_shared<QtPicture>(std::move(image), twips_);
    return placeholder_;
}

std::shared_ptr<forms::Picture> QtPictures::applicationIcon() {
    const QIcon icon = QGuiApplication::windowIcon();
    const QImage image = icon.isNull() ? QImage() : icon.pixmap(QSize(48, 48)).toImage();
    if (image.isNull()) return placeholder();
    return std::make_shared<QtPicture>(image, twips_);
}

} // namespace qtface
