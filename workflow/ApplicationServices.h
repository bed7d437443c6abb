#pragma once

#include <string>

namespace quorvane {

// What every window asks of the application as a whole. User interface thread only.
class ApplicationServices {
public:
    ApplicationServices() = default;
    ApplicationServices(const ApplicationServices&) = delete;
    ApplicationServices& operator=(const ApplicationServices&) = delete;
    virtual ~ApplicationServices() = default;

    // Shows a notice with an "OK" button. With `waitForResponse` returns when it is answered or after ten
    // seconds, whichever is first; windows are painted meanwhile but take no input. Deliberate: the texts are
    // read as Mac OS Roman although they are UTF-8, so a character beyond ASCII shows as its Mac OS Roman
    // reading.
    virtual void displayNotice(const std::string& header, const std::string& message, bool waitForResponse)
        = 0;

    // Ends the program once the event that is being handled is done with.
    virtual void terminate() = 0;
};

} // namespace quorvane
