#pragma once

#include "workflow/ApplicationServices.h"

#include <string>
#include <vector>

namespace quorvane::test {

// Records the calls of the windows, and returns configured answers.
class FakeApplication : public workflow::ApplicationServices {
public:
    struct Notice {
        std::string header;
        std::string message;
        bool waited = false;
    };

    void displayNotice(const std::string& header, const std::string& message, bool waitForResponse) override
    {
        notices.push_back({header, message, waitForResponse});
    }
    bool isAdminUser() override
    {
        ++adminQuestions;
        return isAdmin;
    }
    bool performAuthentication() override
    {
        ++authentications;
        return authenticates;
    }
    bool showPreferences() const override { return startedForPreferences; }
    void showPreferencesWindow() override { ++preferencesShown; }
    void showHelp() override { ++helpShown; }
    void terminate() override { ++terminations; }
    bool isTerminating() const override { return terminations > 0; }

    bool isAdmin = true;
    bool authenticates = true;
    bool startedForPreferences = false;

    std::vector<Notice> notices;
    int adminQuestions = 0;
    int authentications = 0;
    int preferencesShown = 0;
    int helpShown = 0;
    int terminations = 0;
};

} // namespace quorvane::test
