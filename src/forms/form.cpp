#include "forms/form.h"

#include <algorithm>

#include "forms/runtime.h"

namespace forms {

Form::Form(Runtime& runtime, std::string name) : runtime_(runtime), name_(std::move(name)) {}

Form::~Form() { retire(); }

void Form::retire() {
    for (Control* c : controls_) runtime_.forget(c);
    if (announced_ && runtime_.host()) runtime_.host()->formDestroyed(*this);
    announced_ = false;
}

void Form::announce() {
    if (announced_) return;
    announced_ = true;
    if (runtime_.host()) runtime_.host()->formCreated(*this);
}

void Form::setWidth(int twips) {
    if (twips != width_) sizeBy(twips, 0);
}

void Form::setHeight(int twips) {
    if (twips != height_) sizeBy(0, twips);
}

void Form::sizeBy(int widthTwips, int heightTwips) {
    int w = widthTwips, h = heightTwips;
    if (view_) view_->sizeForm(*this, w, h);
    platformResized(w > 0 ? w : width_, h > 0 ? h : height_);
}

void Form::platformResized(int widthTwips, int heightTwips) {
    if (widthTwips == width_ && heightTwips == height_) return;
    width_ = widthTwips;
    height_ = heightTwips;
    runtime_.raise(Resize);
}

void Form::setVisible(bool v) {
    if (v == visible_) return;
    visible_ = v;
    if (view_) view_->formChanged(*this, Prop::Visible);
}

Control* Form::find(const std::string& name) const {
    for (Control* c : controls_)
        if (c->name() == name) return c;
    return nullptr;
}

std::vector<Control*> Form::tabOrder() const {
    std::vector<Control*> order;
    for (Control* c : controls_)
        if (c->TabStop() && c->canFocus()) order.push_back(c);
    std::stable_sort(order.begin(), order.end(), [](Control* a, Control* b) { return a->TabIndex() < b->TabIndex(); });
    return order;
}

void Form::changed(Control& control, Prop what) {
    if (view_) view_->changed(control, what);
}

} // namespace forms
