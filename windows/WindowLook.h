#pragma once

class QApplication;
class QWidget;

namespace quorvane {

// The look that all windows share: light and calm, dark text on white, whatever the desktop's own colours
// are. Called once, before the first window.
void applyWindowLook(QApplication& application);

// The look of the windows that stand over the main one: a light sheet that lets what is behind it shine
// through a little where the desktop can do so, and of the same colour where it cannot. To be called before
// the window is shown for the first time. The title bar stays the desktop's own, because moving, closing and
// switching of windows are its business.
void applySheetLook(QWidget& window);

// Shows the window over all others, with the keyboard.
void bringToFront(QWidget& window);

} // namespace quorvane
