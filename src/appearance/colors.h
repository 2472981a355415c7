#pragma once
#include <string>

#include "forms/control.h"

namespace qm {

class frmMain;

enum class ColorSetting { Heading, ListBack, EditorBack, CellText, ListText };

struct ColorFile {
    const char* file;
    ColorSetting which;
    forms::Color defaultColor;
};

// The five colour files in the order they are read and reset.
inline constexpr ColorFile kColorFiles[] = {
    {"HColor", ColorSetting::Heading, 0},
    {"CatColor", ColorSetting::ListBack, 16777215},
    {"SelectedCell", ColorSetting::EditorBack, 65280},
    {"CellText", ColorSetting::CellText, 0},
    {"ListBoxText", ColorSetting::ListText, 0},
};

// The digits of a colour file as a colour; fails for anything but a whole number in 32 bits.
forms::Color ColorFromText(const std::string& text);
// What a person would call a colour ("dark green (#008000)"), for a reader.
std::string ColorName(forms::Color c);
// Puts one colour on the main window's controls it belongs to.
void ApplyColor(frmMain& main, ColorSetting which, forms::Color c);
// Stores the shared ColorValue in the colour's file under the given file
// number; a file that can't be written is left as it was.
void WriteColorFile(frmMain& main, ColorSetting which, int fileNumber);

} // namespace qm
