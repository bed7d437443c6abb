#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace quorvane::platform {

// The applications that run on this machine, known by their bundle identifiers ("maker.Program"). User
// interface thread only.
class RunningApplications {
public:
    RunningApplications() = default;
    RunningApplications(const RunningApplications&) = delete;
    RunningApplications& operator=(const RunningApplications&) = delete;
    virtual ~RunningApplications() = default;

    // The processes of the application `identifier`, the one that was started first at the front; of those
    // started in the same instant the lower number. Only those that this user may look at, never the asking
    // process itself.
    virtual std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) = 0;

    // Sends `signal` to `process` if that still is the application `identifier`; its number may be another's
    // by now. Whether it arrived is not told.
    virtual void sendSignal(std::int32_t process, const std::string& identifier, int signal) = 0;
};

// A program inside a bundle, ".../Name.app/Contents/MacOS/program", is the application that the bundle's
// Info.plist names. Any other is known by its file name alone, which must be the last part of the identifier:
// "Program". What a process says of itself (its arguments, its title) counts for nothing.
std::unique_ptr<RunningApplications> makeRunningApplications();

} // namespace quorvane::platform
