#pragma once
#include <chrono>
#include <functional>
#include <vector>

#include "forms/failure.h"

namespace forms {

class Control;
class Form;

// Whoever shows forms: told of each form when it is complete and when it goes.
class FormHost {
public:
    virtual ~FormHost() = default;
    virtual void formCreated(Form& form) = 0;
    virtual void formDestroyed(Form& form) = 0;
};

// The event machinery shared by all forms of one program: handlers run
// synchronously and nest, and focus events wait until the outermost handler has
// ended, then go to whichever control holds the focus at that moment.
class Runtime {
public:
    // Runs one event handler. A failure that a handler does not catch itself
    // ends that handler only, never the code whose assignment raised the event.
    // (Inline: a load raises two cell events for every field it reads.)
    void raise(const std::function<void()>& handler) {
        if (handler) run(handler);
    }

    // Runs a piece of platform input (a click, a key, a focus change by the
    // user) as an outermost event, so the focus events it causes follow it.
    void dispatch(const std::function<void()>& input) {
        if (depth_ == 0) inputStart_ = std::chrono::steady_clock::now();
        run(input);
    }
    // How long the piece of platform input now being handled (with the focus
    // events and posted jobs that follow it) has run so far.
    std::chrono::steady_clock::duration inputAge() const { return std::chrono::steady_clock::now() - inputStart_; }

    Control* focused() const { return focused_; }
    // Moves the focus; the caller has checked that the control can take it.
    void moveFocus(Control* control);
    // Gives the focus back to a control that the user moved it to and whose
    // GotFocus passed it on, without a second GotFocus: that gain has run.
    void returnFocus(Control* control);
    // Forgets a control that goes away (a form being unloaded).
    void forget(Control* control);

    int depth() const { return depth_; }

    // Runs f once the outermost event has ended (for example, to drop a window
    // whose own button asked for it, after that button's handler is done).
    void post(std::function<void()> f);

    void setHost(FormHost* host) { host_ = host; }
    FormHost* host() const { return host_; }

private:
    [[gnu::always_inline]] void run(const std::function<void()>& f) {
        ++depth_;
        try {
            f();
        } catch (const Failure&) {
            // An error no handler caught ends that handler alone.
        }
        if (--depth_ == 0) outermostEnded();
    }
    void outermostEnded();
    void flushFocusEvents();
    void runPosted();

    FormHost* host_ = nullptr;
    Control* focused_ = nullptr;
    bool focusMoved_ = false;
    bool flushing_ = false;
    int depth_ = 0;
    std::chrono::steady_clock::time_point inputStart_;
    std::vector<std::function<void()>> posted_;
};

} // namespace forms
