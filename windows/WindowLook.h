#pragma once

class QApplication;

namespace quorvane {

// The look that all windows share: light and calm, dark text on white, whatever the desktop's own colours
// are. Called once, before the first window.
void applyWindowLook(QApplication& application);

} // namespace quorvane
