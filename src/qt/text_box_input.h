#pragma once
#include <QKeyEvent>
#include <QLineEdit>

#include "forms/controls.h"
#include "qt/qt_host.h"

namespace qtface {

// The text box's own key path. The QLineEdit never edits by itself: every key
// is one dispatch of KeyDown(code, shift), then KeyPress(char) for each
// character the key types (a code set to 0 cancels it), then the box's own
// edit (caret keys, Delete, the character), which raises Change. The box's
// text, caret and selection then come back into the QLineEdit at the sync.
void keyIntoTextBox(QtHost& host, forms::TextBox& box, const QKeyEvent& e);

// Text composed by an input method: each character as if typed, without KeyDown.
void commitIntoTextBox(QtHost& host, forms::TextBox& box, const QString& text);

// Text put in without a key (the context menu's Paste): the box replaces its selection.
void pasteIntoTextBox(QtHost& host, forms::TextBox& box);
void copyFromTextBox(const forms::TextBox& box);

// A press places the caret and moves the focus, and gives the caret's place
// (the anchor of a drag); a drag selects from that anchor to the mouse.
int pressInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint at);
void dragInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, int anchor, QPoint at);

// The context menu of a text box: Copy, Paste, Select All, done through the box.
void contextMenuOfTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint globalPos);

} // namespace qtface
