#include "qt/text_units.h"

namespace qtface {

int utf16Offset(const QString& text, int codePoints) {
    int i = 0;
    for (int n = 0; n < codePoints && i < text.size(); ++n)
        i += (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) ? 2 : 1;
    return i;
}

int codePointsBefore(const QString& text, int utf16Offset) {
    int n = 0;
    for (int i = 0; i < utf16Offset && i < text.size(); ++n)
        i += (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) ? 2 : 1;
    return n;
}

} // namespace qtface
