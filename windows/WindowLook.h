#pragma once

#include "platform/Appearance.h"

class QApplication;
class QWidget;

namespace quorvane::windows {

class Shade;

// The look that all windows share: calm, in shades of its own, whatever the desktop's colours are, and light
// at first. Called once, before the first window.
void applyWindowLook(QApplication& application);

// All windows but sheets take this look, those that are open too.
void setAppearance(QApplication& application, platform::Appearance look);

// The widget's text or background is in that shade of the present look, whichever that is. `shade` must
// outlive the widget, which is to be given one of the two, once.
void setTextShade(QWidget& widget, const Shade& shade);
void setBackgroundShade(QWidget& widget, const Shade& shade);

// The look of the windows that stand over the main one: a light sheet, whatever the look of the others, that
// lets what is behind it shine through a little where the desktop can do so, and of the same colour where it
// cannot. To be called before the window is shown for the first time. The title bar stays the desktop's own,
// because moving, closing and switching of windows are its business.
void applySheetLook(QWidget& window);

// Shows the window over all others, with the keyboard.
void bringToFront(QWidget& window);

} // namespace quorvane::windows
