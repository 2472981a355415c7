#include "qt/twips.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

#include "forms/control.h"

namespace qtface {

Twips Twips::forScreen() {
    QScreen* screen = QGuiApplication::primaryScreen();
    double dpi = screen ? screen->logicalDotsPerInchY() : 96.0;
    return Twips(dpi > 0 ? dpi : 96.0);
}

int Twips::px(int twips) const { return static_cast<int>(std::lround(twips * dpi_ / 1440.0)); }

int Twips::twips(int px) const { return static_cast<int>(std::lround(px * 1440.0 / dpi_)); }

QPoint absoluteTwips(const forms::Control& c) {
    QPoint p;
    for (const forms::Control* k = &c; k; k = k->container()) p += QPoint(k->Left(), k->Top());
    return p;
}

QRect Twips::controlRect(const forms::Control& c) const {
    QPoint abs = absoluteTwips(c);
    QPoint parent = abs - QPoint(c.Left(), c.Top());
    int left = px(abs.x()) - px(parent.x());
    int top = px(abs.y()) - px(parent.y());
    int right = px(abs.x() + c.Width()) - px(parent.x());
    int bottom = px(abs.y() + c.Height()) - px(parent.y());
    return QRect(QPoint(left, top), QPoint(right - 1, bottom - 1));
}

} // namespace qtface
