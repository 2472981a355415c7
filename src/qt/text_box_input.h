#pragma once
#include <QKeyEvent>
#include <QLineEdit>

#include "forms/controls.h"
#include "qt/qt_host.h"

namespace qtface {

// The text box's key path. The QLineEdit never edits by itself: a key goes to
// the runtime as one piece of input (KeyDown, KeyPress for the character it
// types, the box's own edit), and the box's text, caret and selection come
// back into the QLineEdit at the sync. The clipboard keys (Ctrl+V, Ctrl+C,
// Ctrl+X, Ctrl+A, unless the menu owns them) run KeyDown and then their edit.
void keyIntoTextBox(QtHost& host, forms::TextBox& box, const QKeyEvent& e);

// Text composed by an input method: each character as if typed, without KeyDown.
void commitIntoTextBox(QtHost& host, forms::TextBox& box, const QString& text);

// The selection to the clipboard; the box doesn't change.
void copyFromTextBox(const forms::TextBox& box);

// A press places the caret and moves the focus, and gives the caret's place
// (the anchor of a drag); a drag selects from that anchor to the mouse.
int pressInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint at);
void dragInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, int anchor, QPoint at);

// The context menu of a text box: Copy, Paste, Select All, done through the box.
void contextMenuOfTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint globalPos);

} // namespace qtface
