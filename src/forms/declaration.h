#pragma once
#include <functional>
#include <string>

#include "forms/controls.h"
#include "forms/form.h"

namespace forms {

// The look of a small window declared in code: its caption, border, title-bar
// buttons, place on the screen, form font and client size in twips.
struct WindowLook {
    std::string caption;
    BorderStyle border = BorderStyle::FixedDialog;
    bool controlBox = true;
    bool centered = true;
    Font font;
    int clientWidth = 0, clientHeight = 0;
};

// Declares the window's look, a dialog; a close by the window manager (or Esc
// with no Cancel button) runs onClose, the same as the window's own closing button.
void declareWindow(Form& form, const WindowLook& look, std::function<void()> onClose);

// A button at its place (twips) with its caption and tab index, running onClick.
void declareButton(Button& button, const std::string& caption, int left, int top, int width, int height, int tabIndex,
                   std::function<void()> onClick);

} // namespace forms
