#include "forms/failure.h"
#include "forms/utf8.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Failure;
namespace key = forms::key;
namespace utf8 = forms::utf8;

namespace {

// The text the box will show once its own handling of Delete or Backspace is
// done, so that the cell can be written first.
std::string afterDelete(const forms::TextBox& box, bool backspace) {
    const std::string& t = box.Text();
    int start = box.SelStart(), len = box.SelLength(), n = box.length();
    if (len > 0) return utf8::mid(t, 0, start) + utf8::mid(t, start + len, n);
    if (backspace) return start > 0 ? utf8::mid(t, 0, start - 1) + utf8::mid(t, start, n) : t;
    return start < n ? utf8::mid(t, 0, start) + utf8::mid(t, start + 1, n) : t;
}

bool isControlChar(int ch) { return ch >= 0 && forms::utf8::isControl(static_cast<char32_t>(ch)); }

} // namespace

void frmMain::ShowCurrentCell() { (void)FG1.CellTop(); }

// Keys that move through the text and across cell borders. The shift state is
// not looked at, and the key goes on to the box's own handling afterwards.
void frmMain::T1_KeyDown(int& KeyCode, int /*Shift*/) {
    try {
        const bool atStart = T1.SelStart() == 0;
        const bool atEnd = T1.SelStart() == T1.length();
        switch (KeyCode) {
        case key::Escape:
            FG1.setText(FG1.Tag());
            T1.setText(FG1.Tag());
            T1.setSelStart(T1.length());
            break;
        case key::Left:
            if (atStart && FG1.Col() > 1) {
                FG1.setCol(FG1.Col() - 1);
            } else if (atStart && FG1.Row() > 1) {
                FG1.setRow(FG1.Row() - 1);
                FG1.setCol(FG1.Cols() - 1);
            }
            break;
        case key::Up:
            if (FG1.Row() > 1) FG1.setRow(FG1.Row() - 1);
            break;
        case key::Right:
            if (atEnd && FG1.Col() < FG1.Cols() - 1) {
                FG1.setCol(FG1.Col() + 1);
            } else if (atEnd && FG1.Row() < FG1.Rows() - 1) {
                FG1.setRow(FG1.Row() + 1);
                FG1.setCol(1);
            }
            break;
        case key::Down:
            if (FG1.Row() < FG1.Rows() - 1) FG1.setRow(FG1.Row() + 1);
            break;
        case key::Delete:
            FG1.setText(afterDelete(T1, false));
            break;
        case key::Enter:
            if (atEnd && FG1.Col() < FG1.Cols() - 1) {
                FG1.setCol(FG1.Col() + 1);
            } else if (atEnd && FG1.Row() < FG1.Rows() - 1) {
                FG1.setRow(FG1.Row() + 1);
                FG1.setCol(1);
            } else {
                AddItemPending = -1;
            }
            T1.setText(FG1.Text());
            break;
        default:
            break;
        }
        ShowCurrentCell();
    } catch (const Failure&) {
    }
}

// Each character is written into the cell before the box takes it, so the
// grid never lags behind what the user sees.
void frmMain::T1_KeyPress(int& KeyAscii) {
    try {
        if (KeyAscii == key::Enter) {
            KeyAscii = 0;
            FG1.setText(T1.Text());
            T1.setVisible(false);
            FG1.SetFocus();
        } else if (KeyAscii == key::Backspace) {
            if (T1.SelStart() != 0 || T1.SelLength() != 0) FG1.setText(afterDelete(T1, true));
        } else if (KeyAscii == key::Escape) {
            FG1.setText(T1.Text());
        } else if (isControlChar(KeyAscii)) {
            KeyAscii = 0; // nothing a file line can't hold reaches a cell
        } else {
            const std::string& t = T1.Text();
            int start = T1.SelStart();
            FG1.setText(utf8::mid(t, 0, start) + utf8::encode(static_cast<char32_t>(KeyAscii)) +
                        utf8::mid(t, start + T1.SelLength(), T1.length()));
        }
    } catch (const Failure&) {
    }
}

// A character typed while the grid itself holds the focus and the editor is closed.
void frmMain::FG1_KeyPress(int& KeyAscii) {
    try {
        FG1.setCellAlignment(forms::Grid::AlignRightCenter);
        if (KeyAscii == key::Backspace) {
            // One Backspace here takes up to two characters.
            for (int pass = 0; pass < 2; ++pass) {
                if (FG1.Text().empty()) break;
                const std::string t(FG1.Text());
                FG1.setText(utf8::mid(t, 0, utf8::length(t) - 1));
                BeginCellEdit();
            }
        } else if (KeyAscii == key::Escape) {
        } else if (KeyAscii == key::Enter) {
            BeginCellEdit();
        } else if (isControlChar(KeyAscii)) {
            KeyAscii = 0;
        } else {
            std::string ch = utf8::encode(static_cast<char32_t>(KeyAscii));
            FG1.setText(ch);
            T1.setText(ch);
            BeginCellEdit();
        }
    } catch (const Failure&) {
    }
}

} // namespace qm
