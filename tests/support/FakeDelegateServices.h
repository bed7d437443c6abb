#pragma once

#include "platform/AdminAuthority.h"
#include "platform/Notices.h"
#include "platform/RunningApplications.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::test {

// Records notices, for a test to end them.
class FakeNotices : public platform::Notices {
public:
    void show(const platform::DesktopNotice& notice, std::function<void(platform::NoticeEnd)> ended) override
    {
        shown.push_back(notice);
        ends.push_back(std::move(ended));
    }
    void finish() override { ++finished; }

    std::vector<platform::DesktopNotice> shown;
    std::vector<std::function<void(platform::NoticeEnd)>> ends;
    int finished = 0;
};

// Returns configured answers and records the calls.
class FakeAuthority : public platform::AdminAuthority {
public:
    bool isAdminUser() override { return isAdmin; }
    bool verifyFingerprint(const std::string& reason) override
    {
        asked.push_back("finger: " + reason);
        return fingerMatches;
    }
    bool verifyPassword(const std::string& reason) override
    {
        asked.push_back("password: " + reason);
        return passwordIsRight;
    }

    bool isAdmin = false;
    bool fingerMatches = false;
    bool passwordIsRight = false;
    std::vector<std::string> asked;
};

// Configured processes, and the signals sent to them.
class FakeRunningApplications : public platform::RunningApplications {
public:
    std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) override
    {
        return running[identifier];
    }
    void sendSignal(std::int32_t process, const std::string& identifier, int signal) override
    {
        sent.push_back(std::to_string(process) + " " + identifier + " " + std::to_string(signal));
    }

    std::map<std::string, std::vector<std::int32_t>> running;
    std::vector<std::string> sent;
};

} // namespace quorvane::test
