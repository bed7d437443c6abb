#pragma once

#include "windows/MessageWindow.h"

namespace quorvane::windows {

// A notice in a small window, for desktops without a notification service. Takes input even while the program
// waits for an answer, closes after a minute, and deletes itself when it is closed. User interface thread
// only.
class NoticeWindow : public MessageWindow {
    Q_OBJECT
public:
    NoticeWindow(const QString& header, const QString& message, const QString& iconFile);
};

} // namespace quorvane::windows
