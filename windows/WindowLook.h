#pragma once

#include "platform/Appearance.h"

class QApplication;
class QLabel;
class QWidget;

namespace quorvane::windows {

class Shade;

// Applies the look that all windows share, with its own colours whatever the desktop's are; initially light.
// Call it once, before the first window. User interface thread only, like all of these.
void applyWindowLook(QApplication& application);

// Applies this look to all windows except sheets, including open ones.
void setAppearance(QApplication& application, platform::Appearance look);

// Set the shade of a widget's text or background, which follows the current look. `shade` must outlive the
// widget. Call at most one of the two, once per widget.
void setTextShade(QWidget& widget, const Shade& shade);
void setBackgroundShade(QWidget& widget, const Shade& shade);

// Applies the look of dialogs over the main window: a light sheet, whatever the look of other windows;
// slightly translucent if the desktop supports that, otherwise opaque in the same colour. Call it before the
// window is first shown. The title bar remains the desktop's, which handles moving, closing and switching
// windows.
void applySheetLook(QWidget& window);

// Makes the label as wide as its text is drawn: the underline of a mnemonic splits the text there, and the
// parts are not kerned with each other.
void measureWithMnemonic(QLabel& label);

// Raises the window above all others, minimised or not, and gives it the keyboard focus.
void bringToFront(QWidget& window);

} // namespace quorvane::windows
