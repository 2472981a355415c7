#include "forms/runtime.h"

#include "forms/control.h"
#include "forms/failure.h"
#include "forms/form.h"

namespace forms {

void Runtime::outermostEnded() {
    flushFocusEvents();
    runPosted();
}

void Runtime::post(std::function<void()> f) {
    posted_.push_back(std::move(f));
    if (depth_ == 0 && !flushing_) runPosted();
}

void Runtime::runPosted() {
    while (!posted_.empty() && depth_ == 0) {
        auto jobs = std::move(posted_);
        posted_.clear();
        for (auto& job : jobs) job();
        flushFocusEvents();
    }
}

void Runtime::moveFocus(Control* control) {
    if (control == focused_) return;
    focused_ = control;
    focusMoved_ = true;
    if (control) control->form().changed(*control, Prop::Focus);
    if (depth_ == 0) {
        flushFocusEvents();
        runPosted();
    }
}

void Runtime::returnFocus(Control* control) {
    if (control == focused_) return;
    focused_ = control;
    if (control) control->form().changed(*control, Prop::Focus);
}

void Runtime::forget(Control* control) {
    if (focused_ == control) focused_ = nullptr;
}

void Runtime::flushFocusEvents() {
    if (flushing_) return;
    flushing_ = true;
    // Each GotFocus goes to the control that holds the focus once the handler
    // that moved it has ended; a handler that moves it again makes another round.
    while (focusMoved_) {
        focusMoved_ = false;
        Control* target = focused_;
        if (!target || !target->GotFocus) continue;
        ++depth_;
        try {
            target->GotFocus();
        } catch (const Failure&) {
        }
        --depth_;
    }
    flushing_ = false;
}

} // namespace forms
