#pragma once

#include "workflow/ApplicationServices.h"

#include <string>
#include <vector>

namespace quorvane {

// Notes what the windows ask of the application.
class FakeApplication : public ApplicationServices {
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
    void terminate() override { ++terminations; }

    std::vector<Notice> notices;
    int terminations = 0;
};

} // namespace quorvane
