#pragma once
#include <functional>
#include <memory>
#include <string>

#include "forms/control.h"

namespace forms {

// A container of other controls, with no handlers of its own.
class Frame : public Control {
public:
    Frame(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::Frame) {}
    std::string Caption;
};

class Label : public Control {
public:
    Label(Form& form, Control* container, std::string name);
    const std::string& Caption() const { return caption_; }
    // Writing a different caption runs Change before it returns.
    void setCaption(const std::string& text);
    bool AutoSize = false;
    std::function<void()> Change;

private:
    std::string caption_;
};

// Key codes the handlers look at.
namespace key {
constexpr int Backspace = 8;
constexpr int Tab = 9;
constexpr int Enter = 13;
constexpr int Shift = 16;
constexpr int Control = 17;
constexpr int Alt = 18;
constexpr int Escape = 27;
constexpr int Space = 32;
constexpr int PageUp = 33;
constexpr int PageDown = 34;
constexpr int End = 35;
constexpr int Home = 36;
constexpr int Left = 37;
constexpr int Up = 38;
constexpr int Right = 39;
constexpr int Down = 40;
constexpr int Delete = 46;
} // namespace key

// A single-line text box. Text, caret and selection count characters (UTF-8
// code points), not bytes.
class TextBox : public Control {
public:
    TextBox(Form& form, Control* container, std::string name);

    const std::string& Text() const { return text_; }
    // Writing a text that differs runs Change before it returns; the same text runs nothing.
    void setText(std::string_view text);
    int SelStart() const { return selStart_; }
    // Moves the caret and clears the selection.
    void setSelStart(int pos);
    int SelLength() const { return selLength_; }
    void setSelLength(int len);
    int length() const; // in characters

    bool Locked = false;

    std::function<void()> Change;
    // Key code and shift state; the code may be changed by the handler.
    std::function<void(int& keyCode, int shift)> KeyDown;
    // Character code by reference: 0 cancels the character.
    std::function<void(int& keyAscii)> KeyPress;

    // The box's own handling of a key after its handlers: caret keys, Delete,
    // Backspace and typed characters. Returns whether the text changed.
    void applyOwnKey(int keyCode);
    void applyOwnChar(char32_t ch);
    // Text put in by the user without a key press (a paste): replaces the
    // selection; control characters become blanks.
    void applyInsert(const std::string& utf8);
    // The caret placed by a click.
    void placeCaret(int pos, int selLength = 0);

private:
    void setTextOwn(std::string text, int caret);
    std::string text_;
    int selStart_ = 0;
    int selLength_ = 0;
};

class Button : public Control {
public:
    Button(Form& form, Control* container, std::string name);
    std::string Caption;
    bool Default = false; // Enter presses it
    bool Cancel = false;  // Esc presses it
    std::function<void()> Click;
};

class CheckBox : public Control {
public:
    CheckBox(Form& form, Control* container, std::string name);
    std::string Caption;
    int Value() const { return value_; }
    // Writing a different value runs Click, as a user's tick does.
    void setValue(int v);
    std::function<void()> Click;

private:
    int value_ = 0;
};

// A filled rectangle that shows its BackColor.
class Shape : public Control {
public:
    Shape(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::Shape) {}
};

// A straight line from (Left, Top) to (X2, Y2).
class Line : public Control {
public:
    Line(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::Line) {}
    int X2 = 0, Y2 = 0;
    int BorderWidth = 1;
};

// A loaded picture as the platform keeps it; the runtime knows its size only.
class Picture {
public:
    virtual ~Picture() = default;
    virtual int widthTwips() const = 0;
    virtual int heightTwips() const = 0;
};

class PictureBox : public Control {
public:
    PictureBox(Form& form, Control* container, std::string name);
    const std::shared_ptr<Picture>& picture() const { return picture_; }
    // Takes the picture (and its size, with AutoSize), then runs Change.
    void setPicture(std::shared_ptr<Picture> pic);
    bool AutoSize = false;
    std::function<void()> Change;

private:
    std::shared_ptr<Picture> picture_;
};

// Shows an HTML file given by its path.
class Browser : public Control {
public:
    Browser(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::Browser) {}
    const std::string& location() const { return location_; }
    void Navigate(const std::string& path);

private:
    std::string location_;
};

} // namespace forms
