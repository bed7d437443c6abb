#pragma once

#include <functional>
#include <string>

namespace quorvane::platform {

// A short message to the person at the screen, with an "OK" button and a picture. Texts are UTF-8 and shown
// as they are, never as markup. Goes away by itself after a minute.
struct DesktopNotice {
    std::string header;
    std::string message;
    std::string iconFile; // may be missing
};

enum class NoticeEnd {
    closed, // answered, or gone in another way
    undeliverable, // the desktop shows no notices; nobody has seen it
};

// The desktop's own way to show notices; they stay when the program has ended. User interface thread only;
// nothing here waits but finish().
class Notices {
public:
    Notices() = default;
    Notices(const Notices&) = delete;
    Notices& operator=(const Notices&) = delete;
    virtual ~Notices() = default;

    // Hands `notice` to the desktop. `ended` is called at most once, later, from the event loop; never when
    // the desktop does not tell of the end.
    virtual void show(const DesktopNotice& notice, std::function<void(NoticeEnd)> ended) = 0;

    // Waits, a few seconds at most, until everything shown so far has been handed over. Before the program
    // ends.
    virtual void finish() = 0;
};

} // namespace quorvane::platform
