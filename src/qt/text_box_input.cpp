#include "qt/text_box_input.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>

#include "forms/input.h"
#include "forms/utf8.h"
#include "qt/key_codes.h"
#include "qt/text_units.h"

namespace qtface {

namespace {

enum class Edit { None, Paste, Copy, Cut, SelectAll };

Edit clipboardEdit(const QKeyEvent& e) {
    if (e.matches(QKeySequence::Paste)) return Edit::Paste;
    if (e.matches(QKeySequence::Copy)) return Edit::Copy;
    if (e.matches(QKeySequence::Cut)) return Edit::Cut;
    if (e.matches(QKeySequence::SelectAll)) return Edit::SelectAll;
    return Edit::None;
}

// The whole text: the box makes its line breaks blanks.
std::string clipboardText() { return QGuiApplication::clipboard()->text().toStdString(); }

void selectAll(QtHost& host, forms::TextBox& box) {
    host.dispatch([&] { box.placeCaret(0, box.length()); });
}

} // namespace

void copyFromTextBox(const forms::TextBox& box) {
    if (box.SelLength() <= 0) return;
    const std::string text = forms::utf8::mid(box.Text(), static_cast<std::size_t>(box.SelStart()),
                                              static_cast<std::size_t>(box.SelLength()));
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

void keyIntoTextBox(QtHost& host, forms::TextBox& box, const QKeyEvent& e) {
    forms::Runtime& rt = host.runtime();
    const KeyStroke k = keyStroke(e);
    const Edit edit = clipboardEdit(e);
    if (edit != Edit::None) {
        forms::input::key(rt, box, k.keyCode, k.shift, 0);
        switch (edit) {
        case Edit::Paste: forms::input::paste(rt, box, clipboardText()); break;
        case Edit::Copy: copyFromTextBox(box); break;
        case Edit::Cut:
            copyFromTextBox(box);
            if (box.SelLength() > 0) forms::input::paste(rt, box, "");
            break;
        case Edit::SelectAll: selectAll(host, box); break;
        case Edit::None: break;
        }
        return;
    }
    if (k.chars.empty()) {
        if (k.keyCode != 0) forms::input::key(rt, box, k.keyCode, k.shift, 0);
        return;
    }
    // A key that types more than one character (a dead key's leftovers): the
    // first goes with the key, the others as typed text.
    forms::input::key(rt, box, k.keyCode, k.shift, k.chars.front());
    if (k.chars.size() > 1) forms::input::text(rt, box, k.chars.substr(1));
}

void commitIntoTextBox(QtHost& host, forms::TextBox& box, const QString& text) {
    forms::input::text(host.runtime(), box, printableChars(text));
}

int pressInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint at) {
    const int pos = codePointsBefore(edit.text(), edit.cursorPositionAt(at));
    forms::input::clickText(host.runtime(), box, pos);
    return pos;
}

void dragInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, int anchor, QPoint at) {
    const int pos = codePointsBefore(edit.text(), edit.cursorPositionAt(at));
    host.dispatch([&] { box.placeCaret(std::min(anchor, pos), std::abs(pos - anchor)); });
}

void contextMenuOfTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint globalPos) {
    QMenu menu(&edit);
    QAction* copy = menu.addAction(QObject::tr("&Copy"));
    copy->setEnabled(box.SelLength() > 0);
    QAction* paste = menu.addAction(QObject::tr("&Paste"));
    paste->setEnabled(!box.Locked && !QGuiApplication::clipboard()->text().isEmpty());
    menu.addSeparator();
    QAction* all = menu.addAction(QObject::tr("Select &All"));
    QPointer<QLineEdit> alive(&edit);
    QAction* chosen = menu.exec(globalPos);
    if (!alive || !chosen) return;
    if (chosen == copy) copyFromTextBox(box);
    else if (chosen == paste) forms::input::paste(host.runtime(), box, clipboardText());
    else if (chosen == all) selectAll(host, box);
}

} // namespace qtface
