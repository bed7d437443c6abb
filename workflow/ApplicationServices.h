#pragma once

#include "workflow/Notice.h"

#include <optional>
#include <string>

namespace quorvane::workflow {

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
    // The same without waiting; nothing when there is no notice.
    void display(const std::optional<Notice>& notice)
    {
        if (notice)
            displayNotice(notice->header, notice->message, false);
    }

    // Whether the user's account is an administrator's. Asks nobody to prove anything.
    virtual bool isAdminUser() = 0;

    // True when the person has proved to be an administrator. Returns when they have answered; until then
    // windows are painted but take no input.
    virtual bool performAuthentication() = 0;

    // Whether the program was started to show the preferences alone.
    virtual bool showPreferences() const = 0;

    // Shows the preferences as they are on disk, in a new window each time.
    virtual void showPreferencesWindow() = 0;

    // Opens the user guide with the desktop's program for it: the page for browsers beside it where the
    // desktop has none. A guide that is missing is only logged.
    virtual void showHelp() = 0;

    // Ends the program once the event that is being handled is done with.
    virtual void terminate() = 0;

    // Whether the end has been asked for: by terminate(), a signal or the end of the desktop session. A wait
    // for a person that returns then has been given up.
    virtual bool isTerminating() const = 0;
};

} // namespace quorvane::workflow
