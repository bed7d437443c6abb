#pragma once

#include "workflow/Notice.h"

#include <optional>
#include <string>

namespace quorvane::workflow {

// The services of the application that every window uses. User interface thread only.
class ApplicationServices {
public:
    ApplicationServices() = default;
    ApplicationServices(const ApplicationServices&) = delete;
    ApplicationServices& operator=(const ApplicationServices&) = delete;
    virtual ~ApplicationServices() = default;

    // Shows a notice with an "OK" button. With `waitForResponse` returns when it is answered or after ten
    // seconds, whichever is first; until then windows are painted but take no input. Deliberate: the texts
    // are decoded as Mac OS Roman although they are UTF-8, so a non-ASCII character shows as its bytes in Mac
    // OS Roman.
    virtual void displayNotice(const std::string& header, const std::string& message, bool waitForResponse)
        = 0;
    // The same without waiting; nothing when there is no notice.
    void display(const std::optional<Notice>& notice)
    {
        if (notice)
            displayNotice(notice->header, notice->message, false);
    }

    // Whether the user's account is an administrator's. Asks for no proof.
    virtual bool isAdminUser() = 0;

    // True when the user has authenticated as an administrator. Returns when the user has answered; until
    // then windows are painted but take no input.
    virtual bool performAuthentication() = 0;

    // Whether the program was started to show only the preferences.
    virtual bool showPreferences() const = 0;

    // Shows the preferences as stored on disk, in a new window each time.
    virtual void showPreferencesWindow() = 0;

    // Opens the user guide with the desktop's program for it: or the HTML page beside it if the desktop has
    // none. A missing guide is only logged.
    virtual void showHelp() = 0;

    // Ends the program once the current event has been handled.
    virtual void terminate() = 0;

    // Whether the end was requested: by terminate(), a signal or the end of the desktop session. Any wait for
    // the user that returns then was cancelled.
    virtual bool isTerminating() const = 0;
};

} // namespace quorvane::workflow
