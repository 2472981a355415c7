#include "forms/declaration.h"

namespace forms {

void declareWindow(Form& form, const WindowLook& look, std::function<void()> onClose) {
    form.Caption = look.caption;
    form.Border = look.border;
    form.ControlBox = look.controlBox;
    form.Centered = look.centered;
    form.font = look.font;
    form.ClientWidth = look.clientWidth;
    form.ClientHeight = look.clientHeight;
    form.CloseRequested = std::move(onClose);
    form.Dialog = true;
}

void declareButton(Button& button, const std::string& caption, int left, int top, int width, int height, int tabIndex,
                   std::function<void()> onClick) {
    button.move(left, top, width, height);
    button.setTabIndex(tabIndex);
    button.Caption = caption;
    button.Click = std::move(onClick);
}

} // namespace forms
