#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::platform {

// The running applications of this machine, identified by bundle identifiers ("maker.Program"). User
// interface thread only.
class RunningApplications {
public:
    RunningApplications() = default;
    RunningApplications(const RunningApplications&) = delete;
    RunningApplications& operator=(const RunningApplications&) = delete;
    virtual ~RunningApplications() = default;

    // The processes of the application `identifier`, ordered by start time, then by process number. Only
    // those that this user may inspect, never the calling process itself. Empty when there is none.
    virtual std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) = 0;

    // Sends `signal` to `process` if that is still the application `identifier`; its number may have been
    // reused by now. Delivery is not reported.
    virtual void sendSignal(std::int32_t process, const std::string& identifier, int signal) = 0;
};

// A program inside a bundle, ".../Name.app/Contents/MacOS/program", is the application that the bundle's
// Info.plist names. Any other is known by its file name alone, which must be the last part of the identifier:
// "Program". What a process claims about itself (its arguments, its title) is ignored.
std::unique_ptr<RunningApplications> makeRunningApplications();

} // namespace quorvane::platform
