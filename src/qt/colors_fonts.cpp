#include "qt/colors_fonts.h"

#include <QFontDatabase>

namespace qtface {

QColor toQColor(forms::Color c, const QPalette& pal) {
    if (!forms::isSystemColor(c)) return QColor(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF);
    switch (c & 0xFF) {
    case 0x00: return pal.color(QPalette::Button);          // scroll bar
    case 0x01: return pal.color(QPalette::Dark);            // desktop
    case 0x02: return pal.color(QPalette::Highlight);       // active caption
    case 0x03: return pal.color(QPalette::Mid);             // inactive caption
    case 0x04: return pal.color(QPalette::Window);          // menu
    case 0x05: return pal.color(QPalette::Base);            // window background
    case 0x06: return pal.color(QPalette::Shadow);          // window frame
    case 0x07: return pal.color(QPalette::WindowText);      // menu text
    case 0x08: return pal.color(QPalette::Text);            // window text
    case 0x09: return pal.color(QPalette::HighlightedText); // caption text
    case 0x0C: return pal.color(QPalette::Dark);            // application workspace
    case 0x0D: return pal.color(QPalette::Highlight);
    case 0x0E: return pal.color(QPalette::HighlightedText);
    case 0x0F: return pal.color(QPalette::Button);          // button face
    case 0x10: return pal.color(QPalette::Dark);            // button shadow
    case 0x11: return pal.color(QPalette::Disabled, QPalette::Text); // grey text
    case 0x12: return pal.color(QPalette::ButtonText);
    case 0x14: return pal.color(QPalette::Light);           // button highlight
    case 0x15: return pal.color(QPalette::Shadow);          // 3D dark shadow
    case 0x16: return pal.color(QPalette::Midlight);        // 3D light
    case 0x17: return pal.color(QPalette::ToolTipText);
    case 0x18: return pal.color(QPalette::ToolTipBase);
    default: return pal.color(QPalette::Window);
    }
}

forms::Color fromQColor(const QColor& c) {
    return static_cast<forms::Color>(c.red()) | (static_cast<forms::Color>(c.green()) << 8) |
           (static_cast<forms::Color>(c.blue()) << 16);
}

QFont toQFont(const forms::Font& f) {
    QFont font;
    if (f.name.empty() || f.name == "MS Sans Serif")
        font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    else
        font.setFamilies({QString::fromStdString(f.name)});
    font.setPointSizeF(f.size > 0 ? f.size : 8.25);
    font.setBold(f.bold);
    return font;
}

} // namespace qtface
