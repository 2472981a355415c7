#include "appearance/colors.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

#include "forms/failure.h"
#include "appearance/frm_properties.h"
#include "mainwindow/frm_main.h"

namespace qm {

using forms::Color;
using forms::Failure;

Color ColorFromText(const std::string& text) {
    std::size_t b = text.find_first_not_of(" \t");
    std::size_t e = text.find_last_not_of(" \t");
    if (b == std::string::npos) throw Failure("type mismatch");
    long long v = 0;
    const char* first = text.data() + b;
    const char* last = text.data() + e + 1;
    auto res = std::from_chars(first, last, v);
    if (res.ec != std::errc() || res.ptr != last) throw Failure("type mismatch");
    if (v < -2147483648LL || v > 0xFFFFFFFFLL) throw Failure("overflow");
    return static_cast<Color>(static_cast<std::uint32_t>(v));
}

// Applies the colour files to the main window and the swatches in their
// order. It has no failure path: the first file that can't be read ends it,
// and the caller's. The first swatch it paints makes the Properties window.
void frmMain::LoadColors() {
    const std::string& data = platform.places.dataFolder;
    for (const ColorFile& cf : kColorFiles) {
        files.OpenInput(1, data + cf.file);
        globals.ColorValue = files.ReadField(1);
        files.Close(1);
        Color c = ColorFromText(globals.ColorValue);
        ApplyColor(*this, cf.which, c);
        Properties().paintSwatch(cf.which, c);
    }
}

std::string ColorName(Color c) {
    if (forms::isSystemColor(c)) return c == forms::syscolor::Window ? "the system's window colour" : "a system colour";
    const int r = c & 0xFF, g = (c >> 8) & 0xFF, b = (c >> 16) & 0xFF;
    const int hi = std::max({r, g, b}), lo = std::min({r, g, b});
    const double light = (hi + lo) / 510.0;
    std::string name;
    if (hi - lo < 24) {
        name = light < 0.1 ? "black" : light > 0.9 ? "white" : light < 0.35 ? "dark grey" : light > 0.65 ? "light grey" : "grey";
    } else {
        const double d = hi - lo;
        double hue = hi == r ? (g - b) / d : hi == g ? 2 + (b - r) / d : 4 + (r - g) / d;
        hue = hue * 60 < 0 ? hue * 60 + 360 : hue * 60;
        struct Hue { double below; const char* name; };
        static const Hue kHues[] = {{15, "red"}, {45, "orange"}, {70, "yellow"}, {165, "green"}, {195, "cyan"},
                                    {255, "blue"}, {290, "purple"}, {345, "pink"}, {361, "red"}};
        name = std::find_if(std::begin(kHues), std::end(kHues), [&](const Hue& h) { return hue < h.below; })->name;
        if (light < 0.3) name = "dark " + name;
        else if (light > 0.75) name = "light " + name;
    }
    char hex[8];
    std::snprintf(hex, sizeof hex, "#%02X%02X%02X", r, g, b);
    return name + " (" + hex + ")";
}

const ColorFile& colorFile(ColorSetting which) {
    for (const ColorFile& cf : kColorFiles)
        if (cf.which == which) return cf;
    return kColorFiles[0];
}

void WriteColorFile(frmMain& m, ColorSetting which, int n) {
    try {
        m.files.Close(n);
        m.files.OpenOutput(n, m.platform.places.dataFolder + colorFile(which).file);
        m.files.WriteLine(n, std::string_view(m.globals.ColorValue));
        m.files.Close(n);
    } catch (const Failure&) {
        m.files.Abandon(n);
    }
}

void ApplyColor(frmMain& m, ColorSetting which, Color c) {
    switch (which) {
    case ColorSetting::Heading: m.lblCategory.setForeColor(c); break;
    case ColorSetting::ListBack: m.lstCategory.setBackColor(c); break;
    case ColorSetting::EditorBack: m.T1.setBackColor(c); break;
    case ColorSetting::CellText: m.T1.setForeColor(c); m.FG1.setForeColor(c); break;
    case ColorSetting::ListText: m.lstCategory.setForeColor(c); break;
    }
}

} // namespace qm
