#include "qt/view_sync.h"

#include "forms/form.h"
#include "qt/control_widgets.h"
#include "qt/form_window.h"

namespace qtface {

using forms::Prop;

namespace {
constexpr unsigned kAllProps = (1u << (static_cast<unsigned>(Prop::Other) + 1)) - 1;
} // namespace

ControlBinding::ControlBinding(QtHost& host, FormWindow& window, forms::Control& control, QWidget* widget)
    : host_(host), window_(window), control_(control), widget_(widget) {
    control_.setView(this);
}

ControlBinding::~ControlBinding() { detach(); }

void ControlBinding::detach() {
    if (!attached_) return;
    attached_ = false;
    if (control_.view() == this) control_.setView(nullptr);
    host_.dequeue(this);
}

QWidget* ControlBinding::focusTarget() const { return widget_; }

void ControlBinding::mark(Prop what) {
    if (!attached_) return;
    pending_ |= propBit(what);
    host_.enqueue(this);
}

void ControlBinding::changed(forms::Control&, Prop what) {
    pending_ |= propBit(what);
    if (!queued) host_.enqueue(this);
    // A control that comes into view in the middle of a long event (the
    // "Loading..." box of a walk) is painted at once, not when the event ends.
    // Its hiding waits for the end of the event like any change, so in a walk
    // that shows and hides it for every category it is painted only once.
    // (Qt paints everything else that waits along with it, so a quick event
    // leaves it to the end.)
    if (what == Prop::Visible && control_.Visible() && host_.paintsAtOnce() && window_.isShown() && widget_) {
        const bool onScreen = widget_->isVisible();
        unsigned props = pending_;
        pending_ = 0;
        apply(props);
        if (!onScreen && widget_->isVisible()) widget_->repaint();
    }
}

void ControlBinding::sync() {
    unsigned props = pending_;
    pending_ = 0;
    if (props) apply(props);
}

void ControlBinding::syncAll() {
    pending_ = 0;
    apply(kAllProps);
}

void ControlBinding::apply(unsigned props) {
    if (!attached_ || !widget_) return;
    const Twips& twips = host_.twips();
    // Fonts and texts before the geometry: a label that sizes itself needs both.
    for (Prop p : {Prop::Font, Prop::Colors, Prop::Items, Prop::Text, Prop::Selection, Prop::Picture, Prop::Enabled,
                   Prop::Geometry, Prop::Visible, Prop::Name, Prop::Other})
        if (props & propBit(p)) mirror(control_, widget_, p, twips);
    if ((props & propBit(Prop::Geometry)) && control_.kind() == forms::Kind::Frame) window_.containerMoved(control_);
}

} // namespace qtface
