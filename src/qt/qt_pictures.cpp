#include "qt/qt_pictures.h"

#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QImageReader>
#include <QPainter>

#include "forms/failure.h"

namespace qtface {

QtPicture::QtPicture(QImage image, const Twips& twips)
    : image_(std::move(image)), w_(twips.twips(image_.width())), h_(twips.twips(image_.height())) {}

std::shared_ptr<forms::Picture> QtPictures::LoadPicture(const std::string& path) {
    const QString file = QString::fromStdString(path);
    if (!QFileInfo(file).isFile()) throw forms::FileNotFound(path);
    QImageReader reader(file);
    reader.setAutoTransform(true);
    QImage image = reader.read();
    if (image.isNull()) throw forms::Failure("invalid picture: " + path + " (" + reader.errorString().toStdString() + ")");
    return std::make_shared<QtPicture>(std::move(image), twips_);
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
