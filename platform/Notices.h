#pragma once

#include <functional>
#include <string>

namespace quorvane::platform {

// A short message to the user with an "OK" button and an icon. Texts are UTF-8 and shown verbatim, never as
// markup. Expires after a minute.
struct DesktopNotice {
    std::string header;
    std::string message;
    std::string iconFile; // the file may be missing
};

enum class NoticeEnd {
    closed, // confirmed, dismissed or expired
    undeliverable, // the desktop shows no notices; the user has not seen it
};

// The desktop's notification service; notices stay after the program has ended. User interface thread only;
// only finish() blocks.
class Notices {
public:
    Notices() = default;
    Notices(const Notices&) = delete;
    Notices& operator=(const Notices&) = delete;
    virtual ~Notices() = default;

    // Sends `notice` to the desktop. `ended` is called at most once, later, from the event loop; never when
    // the desktop does not report the end.
    virtual void show(const DesktopNotice& notice, std::function<void(NoticeEnd)> ended) = 0;

    // Waits, a few seconds at most, until everything shown so far has been sent. Call it before the program
    // ends.
    virtual void finish() = 0;
};

} // namespace quorvane::platform
