#pragma once

#include "windows/MessageWindow.h"

namespace quorvane::windows {

// A notice in a small window of its own, for desktops without a service for notices. Takes input even while
// the program waits for an answer, goes away by itself after a minute, and deletes itself when it is closed.
class NoticeWindow : public MessageWindow {
    Q_OBJECT
public:
    NoticeWindow(const QString& header, const QString& message, const QString& iconFile);
};

} // namespace quorvane::windows
