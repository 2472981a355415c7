#pragma once
#include <QObject>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "forms/runtime.h"
#include "qt/twips.h"

namespace forms {
class Control;
class Form;
} // namespace forms

namespace qtface {

class FormWindow;

// A widget (or a model behind one) with changes from the model not yet shown.
class Syncable {
public:
    virtual ~Syncable() = default;
    virtual void sync() = 0;
    bool queued = false;
};

// The desktop face of the forms runtime: a real window for every form that is
// announced, and the one road by which user input reaches the runtime.
//
// Model changes only mark what they touch; the widgets are brought up to date
// once the outermost event has ended (a job posted to the runtime), since a
// single event can change a control hundreds of thousands of times. A modal box
// inside an event syncs first; the event loop syncs whatever else is left.
class QtHost : public QObject, public forms::FormHost {
    Q_OBJECT
public:
    explicit QtHost(forms::Runtime& runtime, Twips twips = Twips::forScreen());
    ~QtHost() override;

    forms::Runtime& runtime() const { return runtime_; }
    const Twips& twips() const { return twips_; }

    void formCreated(forms::Form& form) override;
    void formDestroyed(forms::Form& form) override;

    // Runs a piece of user input that has no entry in forms::input as an
    // outermost event; its outcome shows when it ends.
    void dispatch(const std::function<void()>& input);
    // Brings every window up to date with the model now.
    void sync();
    bool syncing() const { return syncing_; }

    // Whether a control that comes into view now is painted at once rather
    // than when the input ends: only once the input has run long enough for
    // the user to wait on it (the "Loading..." box of a long walk). A click
    // that is over sooner paints the window once, with its outcome.
    bool paintsAtOnce() const { return runtime_.depth() > 0 && !syncing_ && runtime_.inputAge() >= paintAtOnceAfter_; }
    void setPaintAtOnceAfter(std::chrono::milliseconds wait) { paintAtOnceAfter_ = wait; }

    void enqueue(Syncable* s);
    void dequeue(Syncable* s);

    FormWindow* window(const forms::Form& form) const;
    // The window of a control's form.
    FormWindow* windowOf(const forms::Control& c) const;

    // The user brought a window to the front: its form takes the focus back.
    void windowActivated(FormWindow& w);
    // A window that goes while it has the keyboard hands it to the window the
    // user was in before, as a window manager does (a bare X server leaves it nowhere).
    void windowGoes(FormWindow& w);

protected:
    void customEvent(QEvent* e) override;

private:
    void syncFocus();

    forms::Runtime& runtime_;
    Twips twips_;
    std::map<const forms::Form*, FormWindow*> windows_;
    std::vector<Syncable*> queue_;
    bool posted_ = false;      // a sync waits in Qt's event queue
    bool runtimePost_ = false; // a sync waits for the end of the runtime's event
    bool syncing_ = false;
    std::chrono::milliseconds paintAtOnceAfter_{100}; // what a user still takes as instant
    forms::Control* shownFocus_ = nullptr;
    std::vector<FormWindow*> activated_; // in the order the user last brought them to the front
};

} // namespace qtface
