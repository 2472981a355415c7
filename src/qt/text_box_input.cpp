#include "qt/text_box_input.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>
#include <QRegularExpression>

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

// A single-line box takes a pasted text up to its first line break.
std::string clipboardLine() {
    QString text = QGuiApplication::clipboard()->text();
    qsizetype cut = text.indexOf(QRegularExpression(QStringLiteral("[\r\n]")));
    if (cut >= 0) text.truncate(cut);
    return text.toStdString();
}

std::string selectedText(const forms::TextBox& box) {
    return forms::utf8::mid(box.Text(), static_cast<std::size_t>(box.SelStart()), static_cast<std::size_t>(box.SelLength()));
}

// Each character goes through KeyPress, then into the box unless cancelled.
void typeCharacters(forms::Runtime& rt, forms::TextBox& box, const std::u32string& chars) {
    for (char32_t ch : chars) {
        int code = static_cast<int>(ch);
        if (box.KeyPress) rt.raise([&] { box.KeyPress(code); });
        if (code != 0) box.applyOwnChar(static_cast<char32_t>(code));
    }
}

} // namespace

void copyFromTextBox(const forms::TextBox& box) {
    if (box.SelLength() > 0) QGuiApplication::clipboard()->setText(QString::fromStdString(selectedText(box)));
}

void keyIntoTextBox(QtHost& host, forms::TextBox& box, const QKeyEvent& e) {
    const KeyStroke k = keyStroke(e);
    const Edit edit = clipboardEdit(e);
    forms::Runtime& rt = host.runtime();
    host.dispatch([&] {
        int code = k.keyCode;
        if (code != 0 && box.KeyDown) rt.raise([&] { box.KeyDown(code, k.shift); });
        switch (edit) {
        case Edit::Paste: box.applyInsert(clipboardLine()); return;
        case Edit::Copy: copyFromTextBox(box); return;
        case Edit::Cut:
            copyFromTextBox(box);
            if (box.SelLength() > 0) box.applyInsert("");
            return;
        case Edit::SelectAll: box.placeCaret(0, box.length()); return;
        case Edit::None: break;
        }
        if (!k.chars.empty()) typeCharacters(rt, box, k.chars);
        else if (code != 0) box.applyOwnKey(code);
    });
}

void commitIntoTextBox(QtHost& host, forms::TextBox& box, const QString& text) {
    for (char32_t ch : printableChars(text)) host.dispatch([&] { typeCharacters(host.runtime(), box, std::u32string(1, ch)); });
}

void pasteIntoTextBox(QtHost& host, forms::TextBox& box) {
    host.dispatch([&] { box.applyInsert(clipboardLine()); });
}

int pressInTextBox(QtHost& host, forms::TextBox& box, QLineEdit& edit, QPoint at) {
    const int pos = codePointsBefore(edit.text(), edit.cursorPositionAt(at));
    host.dispatch([&] {
        box.placeCaret(pos);
        box.TrySetFocus();
    });
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
    else if (chosen == paste) pasteIntoTextBox(host, box);
    else if (chosen == all) host.dispatch([&] { box.placeCaret(0, box.length()); });
}

} // namespace qtface
