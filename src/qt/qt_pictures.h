#pragma once
#include <QImage>

#include "forms/controls.h"
#include "forms/ports.h"
#include "qt/twips.h"

namespace qtface {

// A picture as this face keeps it: the decoded image and its size in twips.
class QtPicture : public forms::Picture {
public:
    QtPicture(QImage image, const Twips& twips);
    int widthTwips() const override { return w_; }
    int heightTwips() const override { return h_; }
    const QImage& image() const { return image_; }

private:
    QImage image_;
    int w_, h_;
};

// Pictures read with Qt's image readers (JPEG, GIF, PNG, BMP...).
class QtPictures : public forms::PicturesPort {
public:
    explicit QtPictures(Twips twips = Twips::forScreen()) : twips_(twips) {}
    std::shared_ptr<forms::Picture> LoadPicture(const std::string& path) override;
    std::shared_ptr<forms::Picture> placeholder() override;
    // The application's window icon, as the program set it at its start.
    std::shared_ptr<forms::Picture> applicationIcon() override;

private:
    Twips twips_;
    std::shared_ptr<forms::Picture> placeholder_; // drawn once: every category switch asks for it
};

} // namespace qtface
