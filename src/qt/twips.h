#pragma once
#include <QPoint>
#include <QRect>

namespace forms {
class Control;
}

namespace qtface {

// Twips (1/1440 inch) to pixels at a logical DPI. Edges are rounded from
// positions measured in the whole window, so that two controls that share an
// edge in twips share it in pixels too, whatever frames lie between them.
class Twips {
public:
    explicit Twips(double dpi = 96.0) : dpi_(dpi) {}
    // The primary screen's logical DPI.
    static Twips forScreen();

    double dpi() const { return dpi_; }
    int px(int twips) const;
    int twips(int px) const;

    // A span [start, start + length) in twips, taken from an absolute origin,
    // in pixels relative to the pixel of the origin.
    int edge(int originTwips, int offsetTwips) const { return px(originTwips + offsetTwips) - px(originTwips); }

    // The control's rectangle in pixels inside its container's widget.
    QRect controlRect(const forms::Control& c) const;

private:
    double dpi_;
};

// The control's position in twips measured from the form's client area.
QPoint absoluteTwips(const forms::Control& c);

} // namespace qtface
