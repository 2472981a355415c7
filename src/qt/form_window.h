#pragma once
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <vector>

#include "forms/form.h"
#include "qt/qt_host.h"

namespace qtface {

class ControlBinding;
class InputRouter;
class MenuFace;
class FormWindow;

// The top-level widget of a form: it passes the window manager's requests
// (close, activation, resize) to its FormWindow and leaves Tab to the router.
class FormWidget : public QWidget {
public:
    FormWidget(FormWindow& owner, Qt::WindowFlags flags, bool dialog);
    // A small window beside the main one, which assistive technology hears as a dialog.
    bool isDialog() const { return dialog_; }

protected:
    void closeEvent(QCloseEvent* e) override;
    bool focusNextPrevChild(bool next) override;
    bool event(QEvent* e) override;
    void resizeEvent(QResizeEvent* e) override;

private:
    QPointer<FormWindow> owner_;
    bool dialog_;
};

// The real window of one announced form, built from its declaration: caption,
// client size, border, menu bar, and one widget per control by its kind inside
// its container's widget.
class FormWindow : public QObject, public forms::ControlView, public Syncable {
    Q_OBJECT
public:
    FormWindow(QtHost& host, forms::Form& form);
    ~FormWindow() override;

    forms::Form& form() const { return form_; }
    QWidget* window() const { return top_; }
    QWidget* client() const { return client_; }
    MenuFace* menu() const { return menu_.get(); }
    ControlBinding* binding(const forms::Control& c) const;
    QWidget* widgetOf(const forms::Control& c) const;

    bool isShown() const { return top_ && top_->isVisible(); }
    bool detached() const { return detached_; }
    // The form is going: lets go of its controls now, the widgets a moment later.
    void detach();

    // The control of this form that had the focus last.
    forms::Control* lastFocused() const { return lastFocused_; }
    void setLastFocused(forms::Control* c) { lastFocused_ = c; }
    // The user brought this window forward: the focus goes back into its form.
    void takeFocus();

    void changed(forms::Control& control, forms::Prop what) override;
    void formChanged(forms::Form& form, forms::Prop what) override;
    void sizeForm(forms::Form& form, int& widthTwips, int& heightTwips) override;
    void sync() override;
    // The plain fields that announce no change: captions, sizes, menu entries.
    void refreshFields();
    // A frame moved: its children's pixel edges are rounded anew.
    void containerMoved(const forms::Control& container);
    // The window was shown or resized: its outer size goes to the form, once the loop runs.
    void resized();
    // The window manager or the desktop asks the window to close.
    void closeRequested();

private:
    void build();
    void place();

    QtHost& host_;
    forms::Form& form_;
    QPointer<FormWidget> top_;
    QWidget* client_ = nullptr;
    std::unique_ptr<MenuFace> menu_;
    std::unique_ptr<InputRouter> router_;
    std::vector<std::unique_ptr<ControlBinding>> bindings_;
    forms::Control* lastFocused_ = nullptr;
    bool detached_ = false;
    bool placed_ = false;
    bool resizePosted_ = false;
};

} // namespace qtface
