#include "forms/control.h"

#include "forms/failure.h"
#include "forms/form.h"
#include "forms/runtime.h"

namespace forms {

Control::Control(Form& form, Control* container, std::string name, Kind kind)
    : form_(form), runtime_(form.runtime()), container_(container), name_(std::move(name)), kind_(kind) {
    form_.registerControl(this);
}

void Control::notify(Prop what) {
    if (view_) view_->changed(*this, what);
    else form_.changed(*this, what);
}

void Control::setLeft(int v) { if (v != left_) { left_ = v; notify(Prop::Geometry); } }
void Control::setTop(int v) { if (v != top_) { top_ = v; notify(Prop::Geometry); } }
void Control::setWidth(int v) {
    if (v < 0) throw Failure("invalid property value");
    if (v != width_) { width_ = v; notify(Prop::Geometry); }
}
void Control::setHeight(int v) {
    if (v < 0) throw Failure("invalid property value");
    if (v != height_) { height_ = v; notify(Prop::Geometry); }
}
void Control::move(int left, int top, int width, int height) {
    if (width < 0 || height < 0) throw Failure("invalid property value");
    if (left == left_ && top == top_ && width == width_ && height == height_) return;
    left_ = left; top_ = top; width_ = width; height_ = height;
    notify(Prop::Geometry);
}

void Control::copyTag(std::string_view t) {
    tagLazy_ = false;
    tag_.assign(t);
}

void Control::changeVisible(bool v) {
    visible_ = v;
    notify(Prop::Visible);
}
void Control::changeEnabled(bool v) {
    enabled_ = v;
    notify(Prop::Enabled);
}
void Control::setAccessibleName(std::string_view name) {
    if (name == accessibleName_) return;
    accessibleName_.assign(name);
    notify(Prop::Name);
}

void Control::setForeColor(Color c) { if (c != foreColor_) { foreColor_ = c; notify(Prop::Colors); } }
void Control::setBackColor(Color c) { if (c != backColor_) { backColor_ = c; notify(Prop::Colors); } }
void Control::setFont(const Font& f) { if (!(f == font_)) { font_ = f; notify(Prop::Font); } }
void Control::setFontSize(double size) {
    if (size != font_.size) { font_.size = size; notify(Prop::Font); }
}

void Control::setLabelledBy(Control* label) {
    if (label != labelledBy_) { labelledBy_ = label; notify(Prop::Other); }
}

bool Control::takesFocus() const {
    switch (kind_) {
    case Kind::TextBox: case Kind::Button: case Kind::CheckBox: case Kind::ListBox: case Kind::Grid: case Kind::Browser:
        return true;
    default:
        return false;
    }
}

bool Control::canFocusOnForm() const {
    if (!takesFocus() || !form_.Visible()) return false;
    for (const Control* c = container_; c; c = c->container_)
        if (!c->visible_ || !c->enabled_) return false;
    return true;
}

void Control::SetFocus() {
    if (!TrySetFocus()) throw Failure("invalid procedure call: " + name_ + " can't take the focus");
}

bool Control::takeFocus() {
    if (!canFocus()) return false;
    runtime().moveFocus(this);
    return true;
}

} // namespace forms
