#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "forms/runtime.h"

namespace forms {

class Form;

// Colours are 0x00BBGGRR; values with the top bit set name a system colour.
using Color = std::uint32_t;
namespace syscolor {
constexpr Color Menu = 0x80000004;
constexpr Color Window = 0x80000005;
constexpr Color WindowText = 0x80000008;
constexpr Color Highlight = 0x8000000D;
constexpr Color HighlightText = 0x8000000E;
constexpr Color ButtonFace = 0x8000000F;
constexpr Color ButtonText = 0x80000012;
} // namespace syscolor
inline bool isSystemColor(Color c) { return (c & 0x80000000u) != 0; }

struct Font {
    std::string name = "MS Sans Serif";
    double size = 8.25;
    bool bold = false;
    bool operator==(const Font&) const = default;
};

enum class Kind { Form, Frame, Label, TextBox, Button, CheckBox, ListBox, Grid, Shape, Line, PictureBox, Browser };

// What changed on a control, so that a view can bring itself up to date.
enum class Prop { Geometry, Visible, Enabled, Text, Colors, Font, Selection, Items, Picture, Name, Focus, Other };

class Control;

// A view of one control (the desktop face gives each control one).
class ControlView {
public:
    virtual ~ControlView() = default;
    virtual void changed(Control& control, Prop what) = 0;
    // The form itself: shown or hidden, caption.
    virtual void formChanged(Form&, Prop) {}
    // Code set the form's outer size (0: that side as it is): the view sizes its
    // window at once, shown or hidden, and writes back the size it really took.
    virtual void sizeForm(Form&, int& /*widthTwips*/, int& /*heightTwips*/) {}
};

// The properties and behaviour every control shares. Positions are twips in the
// control's container.
class Control {
public:
    Control(Form& form, Control* container, std::string name, Kind kind);
    virtual ~Control() = default;
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    const std::string& name() const { return name_; }
    Kind kind() const { return kind_; }
    Form& form() const { return form_; }
    Control* container() const { return container_; }

    int Left() const { return left_; }
    int Top() const { return top_; }
    int Width() const { return width_; }
    int Height() const { return height_; }
    void setLeft(int v);
    void setTop(int v);
    void setWidth(int v);
    void setHeight(int v);
    void move(int left, int top, int width, int height);

    bool Visible() const { return visible_; }
    void setVisible(bool v) {
        if (v != visible_) changeVisible(v);
    }
    bool Enabled() const { return enabled_; }
    void setEnabled(bool v) {
        if (v != enabled_) changeEnabled(v);
    }

    int TabIndex() const { return tabIndex_; }
    void setTabIndex(int v) { tabIndex_ = v; }
    bool TabStop() const { return tabStop_; }
    void setTabStop(bool v) { tabStop_ = v; }
    // A control that is no tab stop and, while it holds the focus, takes
    // another's place in the tab order (the cell editor laid over the grid).
    Control* StandsFor() const { return standsFor_; }
    void setStandsFor(Control* c) { standsFor_ = c; }

    // What assistive technology calls the control where its caption or text
    // doesn't say it (the totals, a text box laid over a grid cell: the cell's
    // item and column; empty: its caption or text), and the label shown for it
    // on the screen.
    const std::string& AccessibleName() const { return accessibleName_; }
    void setAccessibleName(std::string_view name);
    Control* LabelledBy() const { return labelledBy_; }
    void setLabelledBy(Control* label);

    Color ForeColor() const { return foreColor_; }
    void setForeColor(Color c);
    Color BackColor() const { return backColor_; }
    void setBackColor(Color c);
    const Font& font() const { return font_; }
    void setFont(const Font& f);
    void setFontSize(double size);

    const std::string& Tag() const {
        settleTag();
        return tag_;
    }
    // Into the tag's own storage, unless a kind of control knows where the text stays.
    void setTag(std::string_view t) { copyTag(t); }

    // Whether the control can hold the input focus now: a kind that takes it,
    // visible and enabled with all its containers, on a form that is shown.
    // (Grid handlers ask this for every cell a load passes: the common answers come inline.)
    bool canFocus() const { return visible_ && enabled_ && canFocusOnForm(); }
    // Gives the control the focus; fails when it can't take it. On the control
    // that has the focus already it does nothing.
    void SetFocus();
    // The same without the failure, for handlers that only try.
    bool TrySetFocus() { return hasFocus() || takeFocus(); }
    bool hasFocus() const { return runtime_.focused() == this; }

    std::function<void()> GotFocus;

    void setView(ControlView* view) { view_ = view; }
    ControlView* view() const { return view_; }

protected:
    void notify(Prop what);
    Runtime& runtime() const { return runtime_; }
    virtual bool takesFocus() const;
    virtual void copyTag(std::string_view t);
    // The tag is the text that lazyTag() gives, without a copy: the control
    // calls settleTag before that text changes or moves.
    void referTag() { tagLazy_ = true; }
    virtual std::string_view lazyTag() const { return {}; }
    void settleTag() const {
        if (tagLazy_) {
            tag_.assign(lazyTag());
            tagLazy_ = false;
        }
    }

private:
    void changeVisible(bool v);
    void changeEnabled(bool v);
    bool canFocusOnForm() const;
    bool takeFocus();

    Form& form_;
    Runtime& runtime_;
    Control* container_;
    std::string name_;
    Kind kind_;
    int left_ = 0, top_ = 0, width_ = 0, height_ = 0;
    bool visible_ = true;
    bool enabled_ = true;
    int tabIndex_ = 0;
    bool tabStop_ = true;
    Control* standsFor_ = nullptr;
    std::string accessibleName_;
    Control* labelledBy_ = nullptr;
    Color foreColor_ = syscolor::WindowText;
    Color backColor_ = syscolor::Window;
    Font font_;
    mutable std::string tag_;
    mutable bool tagLazy_ = false;
    ControlView* view_ = nullptr;
};

} // namespace forms
