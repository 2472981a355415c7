#pragma once
#include <functional>
#include <string>
#include <vector>

#include "forms/control.h"
#include "forms/menu.h"

namespace forms {

class Runtime;

enum class BorderStyle { Fixed, Sizable, FixedDialog };

// A window: its controls in the order they were declared, its menu bar, and
// whether it is on the screen.
class Form : public ControlView {
public:
    Form(Runtime& runtime, std::string name);
    ~Form() override;

    // Called by a window once its controls are declared: the host may now show it.
    void announce();
    // Called by a window before its controls go: the host lets go of it.
    void retire();

    const std::string& name() const { return name_; }
    Runtime& runtime() const { return runtime_; }

    std::string Caption;
    int ClientWidth = 0;  // twips
    int ClientHeight = 0; // twips
    BorderStyle Border = BorderStyle::Fixed;
    bool ControlBox = true; // close, minimise and maximise buttons in the title bar
    bool Centered = true;
    // A small window beside the main one: assistive technology hears a dialog,
    // and Esc closes it when no Cancel button does.
    bool Dialog = false;
    Font font;
    std::string Icon;     // a picture file shown as the window's icon

    // The outer size as the window really took it. Setting a side sizes the
    // window at once, also while it is hidden; Resize runs if the size changed.
    int Width() const { return width_; }
    int Height() const { return height_; }
    void setWidth(int twips);
    void setHeight(int twips);

    bool Visible() const { return visible_; }
    // Showing or hiding; a form that is not visible gives no control the focus.
    void setVisible(bool v);

    MenuItem& menuBar() { return menuBar_; }
    const std::vector<Control*>& controls() const { return controls_; }
    Control* find(const std::string& name) const;

    // Controls in tab order that can take the focus now.
    std::vector<Control*> tabOrder() const;

    std::function<void()> Resize;
    // The user closes the window by its title bar; without a handler it is hidden.
    std::function<void()> CloseRequested;

    // The size the window really took, as the platform reports it; runs Resize.
    void platformResized(int widthTwips, int heightTwips);

    void registerControl(Control* c) { controls_.push_back(c); }
    void setView(ControlView* view) { view_ = view; }
    ControlView* view() const { return view_; }

    // A control's change passed on to the form's view, if any.
    void changed(Control& control, Prop what) override;

private:
    void sizeBy(int widthTwips, int heightTwips);

    Runtime& runtime_;
    std::string name_;
    bool visible_ = false;
    int width_ = 0, height_ = 0;
    MenuItem menuBar_{"", ""};
    std::vector<Control*> controls_;
    ControlView* view_ = nullptr;
    bool announced_ = false;
};

} // namespace forms
