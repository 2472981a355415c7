#pragma once
#include <QColor>
#include <QFont>
#include <QPalette>

#include "forms/control.h"

namespace qtface {

// 0x00BBGGRR, or a system colour (0x800000xx) looked up in the palette.
QColor toQColor(forms::Color c, const QPalette& palette);
forms::Color fromQColor(const QColor& c);

// "MS Sans Serif" is the desktop's own sans-serif; other names are asked for
// as they are, so that fontconfig can put a look-alike in their place.
QFont toQFont(const forms::Font& f);

} // namespace qtface
