#pragma once

#include "windows/MessageWindow.h"

#include <functional>

namespace quorvane::windows {

// A small window that says what the program loads before it can show its own, for loads that take long
// (0.3 s). User interface thread only.
class LoadingWindow : public MessageWindow {
    Q_OBJECT
public:
    // `header`: the title, too. `message`: what is being loaded.
    LoadingWindow(const QString& iconFile, const QString& header, const QString& message);

    // Runs `load`, which must not throw, on another thread. Handles events until it has returned, or until
    // the user does not want to wait any longer: then false, and it goes on. The window is visible meanwhile
    // when that takes long.
    bool run(const std::function<void()>& load);
};

} // namespace quorvane::windows
