#include "forms/controls.h"

#include "forms/failure.h"
#include "forms/form.h"
#include "forms/runtime.h"
#include "forms/utf8.h"

namespace forms {

Label::Label(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::Label) {
    setTabStop(false);
}

void Label::setCaption(const std::string& text) {
    if (text == caption_) return;
    caption_ = text;
    notify(Prop::Text);
    runtime().raise(Change);
}

TextBox::TextBox(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::TextBox) {}

int TextBox::length() const { return static_cast<int>(utf8::length(text_)); }

void TextBox::setText(std::string_view text) {
    if (text == text_) return;
    text_ = text;
    // A new text puts the caret at its start, as the platform's box does.
    selStart_ = 0;
    selLength_ = 0;
    notify(Prop::Text);
    runtime().raise(Change);
}

void TextBox::setSelStart(int pos) {
    if (pos < 0) throw Failure("invalid property value");
    int len = length();
    selStart_ = pos > len ? len : pos;
    selLength_ = 0;
    notify(Prop::Selection);
}

void TextBox::setSelLength(int len) {
    if (len < 0) throw Failure("invalid property value");
    int room = length() - selStart_;
    selLength_ = len > room ? room : len;
    notify(Prop::Selection);
}

void TextBox::placeCaret(int pos, int selLength) {
    int len = length();
    if (pos < 0) pos = 0;
    if (pos > len) pos = len;
    if (selLength < 0) selLength = 0;
    if (pos + selLength > len) selLength = len - pos;
    selStart_ = pos;
    selLength_ = selLength;
    notify(Prop::Selection);
}

void TextBox::setTextOwn(std::string text, int caret) {
    bool changed = text != text_;
    text_ = std::move(text);
    selStart_ = caret;
    selLength_ = 0;
    notify(changed ? Prop::Text : Prop::Selection);
    if (changed) runtime().raise(Change);
}

void TextBox::applyOwnKey(int keyCode) {
    if (Locked && (keyCode == key::Delete || keyCode == key::Backspace)) return;
    int len = length();
    switch (keyCode) {
    case key::Left:
        placeCaret(selLength_ > 0 ? selStart_ : selStart_ - 1);
        break;
    case key::Right:
        placeCaret(selLength_ > 0 ? selStart_ + selLength_ : selStart_ + 1);
        break;
    case key::Home: case key::Up: case key::PageUp:
        placeCaret(0);
        break;
    case key::End: case key::Down: case key::PageDown:
        placeCaret(len);
        break;
    case key::Delete:
        if (selLength_ > 0)
            setTextOwn(utf8::mid(text_, 0, selStart_) + utf8::mid(text_, selStart_ + selLength_, len), selStart_);
        else if (selStart_ < len)
            setTextOwn(utf8::mid(text_, 0, selStart_) + utf8::mid(text_, selStart_ + 1, len), selStart_);
        break;
    default:
        break;
    }
}

void TextBox::applyOwnChar(char32_t ch) {
    if (Locked) return;
    int len = length();
    if (ch == key::Backspace) {
        if (selLength_ > 0)
            setTextOwn(utf8::mid(text_, 0, selStart_) + utf8::mid(text_, selStart_ + selLength_, len), selStart_);
        else if (selStart_ > 0)
            setTextOwn(utf8::mid(text_, 0, selStart_ - 1) + utf8::mid(text_, selStart_, len), selStart_ - 1);
        return;
    }
    if (utf8::isControl(static_cast<char32_t>(ch))) return; // a single-line box takes no control characters
    setTextOwn(utf8::mid(text_, 0, selStart_) + utf8::encode(ch) + utf8::mid(text_, selStart_ + selLength_, len),
               selStart_ + 1);
}

void TextBox::applyInsert(const std::string& pasted) {
    if (Locked) return;
    // A single line holds no control characters: line breaks and tabs become blanks.
    const std::string s = utf8::blankControls(pasted);
    int len = length();
    setTextOwn(utf8::mid(text_, 0, selStart_) + s + utf8::mid(text_, selStart_ + selLength_, len),
               selStart_ + static_cast<int>(utf8::length(s)));
}

Button::Button(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::Button) {}

CheckBox::CheckBox(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::CheckBox) {}

void CheckBox::setValue(int v) {
    if (v == value_) return;
    value_ = v;
    notify(Prop::Text);
    runtime().raise(Click);
}

PictureBox::PictureBox(Form& form, Control* container, std::string name) : Control(form, container, std::move(name), Kind::PictureBox) {
    setTabStop(false);
}

void PictureBox::setPicture(std::shared_ptr<Picture> pic) {
    picture_ = std::move(pic);
    if (AutoSize && picture_) {
        int w = picture_->widthTwips(), h = picture_->heightTwips();
        if (w != Width() || h != Height()) move(Left(), Top(), w, h);
    }
    notify(Prop::Picture);
    runtime().raise(Change);
}

void Browser::Navigate(const std::string& path) {
    location_ = path;
    notify(Prop::Text);
}

} // namespace forms
