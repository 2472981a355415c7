#pragma once
#include <QString>

namespace qtface {

// The model counts text in code points, Qt in UTF-16 units.
int utf16Offset(const QString& text, int codePoints);
int codePointsBefore(const QString& text, int utf16Offset);

} // namespace qtface
