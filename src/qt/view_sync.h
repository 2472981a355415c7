#pragma once
#include <QPointer>
#include <QWidget>

#include "forms/control.h"
#include "qt/qt_host.h"

namespace qtface {

class FormWindow;

// Ties one control to its widget. A change of the control only records what
// changed (the notifications can come hundreds of thousands of times in one
// event); the widget follows at the next sync.
class ControlBinding : public forms::ControlView, public Syncable {
public:
    ControlBinding(QtHost& host, FormWindow& window, forms::Control& control, QWidget* widget);
    ~ControlBinding() override;
    ControlBinding(const ControlBinding&) = delete;
    ControlBinding& operator=(const ControlBinding&) = delete;

    forms::Control& control() const { return control_; }
    QWidget* widget() const { return widget_; }
    FormWindow& window() const { return window_; }
    // The widget that holds the keyboard focus for this control.
    QWidget* focusTarget() const;

    void changed(forms::Control& control, forms::Prop what) override;
    void sync() override;
    // Everything at once, as when the widget is made.
    void syncAll();
    // Marks a property as changed (a container moved, a field without notification).
    void mark(forms::Prop what);
    // Lets go of the control: the form is going.
    void detach();

private:
    void apply(unsigned props);
    QtHost& host_;
    FormWindow& window_;
    forms::Control& control_;
    QPointer<QWidget> widget_;
    unsigned pending_ = 0;
    bool attached_ = true;
};

inline unsigned propBit(forms::Prop p) { return 1u << static_cast<unsigned>(p); }

} // namespace qtface
