#pragma once
#include <QWidget>

#include "forms/control.h"
#include "qt/twips.h"

namespace qtface {

class QtHost;

// The widget that shows a control of its kind, made inside its container's widget.
QWidget* createControlWidget(QtHost& host, forms::Control& control, QWidget* parent);

// Brings one property of the widget in line with the control. Prop::Other
// stands for the plain fields that announce no change (captions, Locked,
// Default, a line's end point).
void mirror(forms::Control& control, QWidget* widget, forms::Prop what, const Twips& twips);

// A filled rectangle in the control's BackColor, edged in its ForeColor.
class ShapeWidget : public QWidget {
public:
    ShapeWidget(forms::Control& c, QWidget* parent) : QWidget(parent), control_(c) {}

protected:
    void paintEvent(QPaintEvent*) override;

private:
    forms::Control& control_;
};

// A straight line; the widget covers the rectangle between its two ends.
class LineWidget : public QWidget {
public:
    LineWidget(forms::Control& c, QWidget* parent);
    // Where the widget lies and the line inside it, from the control.
    void place(const Twips& twips);

protected:
    void paintEvent(QPaintEvent*) override;

private:
    forms::Control& control_;
    QPoint from_, to_;
};

// Shows a loaded picture at its own size, from the top left corner.
class PictureWidget : public QWidget {
public:
    PictureWidget(forms::Control& c, QWidget* parent) : QWidget(parent), control_(c) {}

protected:
    void paintEvent(QPaintEvent*) override;

private:
    forms::Control& control_;
};

} // namespace qtface
