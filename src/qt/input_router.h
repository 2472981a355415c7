#pragma once
#include <QObject>
#include <QPointer>
#include <unordered_map>

#include "forms/control.h"
#include "qt/qt_host.h"

class QKeyEvent;
class QMouseEvent;
class QWheelEvent;

namespace qtface {

class ControlBinding;
class FormWindow;
class MenuFace;

// Turns what the user does in one window into runtime input, always through
// QtHost::dispatch so that the focus events it causes follow it. Qt's widgets
// never act by themselves: the router takes their mouse and key events first.
//
// Keys go to the control that holds the runtime's focus, whichever widget Qt
// delivered them to: menu shortcuts first (in every widget, text boxes too),
// then Tab and Shift+Tab along the form's tab order, then Enter and Esc for the
// Default and Cancel buttons, then the control's own key handling.
class InputRouter : public QObject {
public:
    InputRouter(QtHost& host, FormWindow& window);

    // Routes the events of a control's widget (and of its viewport, if it scrolls).
    void watch(ControlBinding& binding);
    // Routes the keys that reach the window itself.
    void watchWindow(QWidget* w);
    void setMenu(MenuFace* menu) { menu_ = menu; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool key(QKeyEvent& e);
    bool shortcutOverride(QKeyEvent& e);
    bool mouse(ControlBinding& b, QObject* watched, QEvent& e);
    bool wheelBeneath(QWidget& box, QWheelEvent& e);
    void tab(bool forward);
    bool listKey(forms::Control& list, QKeyEvent& e);
    bool gridKey(forms::Control& grid, QKeyEvent& e);
    void clickButton(forms::Control& button);
    void toggleCheckBox(forms::Control& box);
    bool gone() const;

    QtHost& host_;
    FormWindow& window_;
    MenuFace* menu_ = nullptr;
    std::unordered_map<QObject*, ControlBinding*> bindings_;
    int dragAnchor_ = -1;
};

} // namespace qtface
