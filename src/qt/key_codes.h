#pragma once
#include <QKeyEvent>
#include <string>

namespace qtface {

// What a key press is in the runtime's terms.
struct KeyStroke {
    int keyCode = 0;        // Windows-style key code (forms::key), 0 for a key without one
    int shift = 0;          // 1 Shift, 2 Ctrl, 4 Alt
    std::u32string chars;   // the characters it types: Enter 13, Esc 27, Backspace 8, or text
};

int windowsKeyCode(int qtKey, Qt::KeyboardModifiers modifiers);
int shiftState(Qt::KeyboardModifiers modifiers);
KeyStroke keyStroke(const QKeyEvent& e);
// Printable characters of a text (an input method's commit), control characters left out.
std::u32string printableChars(const QString& text);

} // namespace qtface
