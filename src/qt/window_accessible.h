#pragma once

namespace qtface {

// What assistive technology is told of the face's windows and containers: the
// main window is a frame and the small windows are dialogs (a plain top-level
// widget would be a filler), a container lists only the controls that are
// shown, and a drawn picture, swatch or line is an image or a separator.
// Installed once, before the first window.
void installWindowAccessibility();

} // namespace qtface
