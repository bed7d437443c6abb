#include "platform/RunningApplications.h"

#include "platform/FileDescriptor.h"
#include "platform/PathComponents.h"
#include "platform/Processes.h"
#include "platform/PropertyList.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

#include <unistd.h>

extern "C" { // missing in this header of glibc 2.36
#include <sys/pidfd.h>
}

namespace quorvane::platform {

namespace {

// The bundle that the program at `path` belongs to; empty when it belongs to none.
std::string bundleOfProgram(const std::string& path)
{
    const std::string programs = deletingLastPathComponent(path);
    const std::string contents = deletingLastPathComponent(programs);
    std::string bundle = deletingLastPathComponent(contents);
    const bool inside = lastPathComponent(programs) == "MacOS" && lastPathComponent(contents) == "Contents"
        && bundle.ends_with(".app");
    return inside ? bundle : std::string();
}

bool isApplication(std::int32_t process, const std::string& identifier)
{
    const auto program = programPathOfProcess(process);
    if (!program)
        return false;
    const std::string bundle = bundleOfProgram(*program);
    if (bundle.empty())
        return lastPathComponent(*program)
            == std::string_view(identifier)
                   .substr(identifier.rfind('.') + 1); // the whole identifier if it has no dot
    const auto info = PropertyList::read(bundle + "/Contents/Info.plist");
    return info && info->stringForKey("CFBundleIdentifier") == identifier;
}

std::vector<std::int32_t> allProcesses()
{
    std::vector<std::int32_t> processes;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::int32_t process = 0;
        const auto [rest, fault] = std::from_chars(name.data(), name.data() + name.size(), process);
        if (fault == std::errc() && rest == name.data() + name.size())
            processes.push_back(process);
    }
    return processes;
}

class ProcessTable : public RunningApplications {
public:
    std::vector<std::int32_t> withBundleIdentifier(const std::string& identifier) override
    {
        std::vector<std::pair<std::uint64_t, std::int32_t>> found; // start time first
        for (const std::int32_t process : allProcesses()) {
            if (process == getpid() || !isApplication(process, identifier))
                continue;
            if (const auto started = startTimeOfProcess(process))
                found.emplace_back(*started, process);
        }
        std::sort(found.begin(), found.end());
        std::vector<std::int32_t> processes;
        processes.reserve(found.size());
        for (const auto& [started, process] : found)
            processes.push_back(process);
        return processes;
    }

    void sendSignal(std::int32_t process, const std::string& identifier, int signal) override
    {
        if (process <= 0 || process == getpid())
            return;
        // Opened before the process is inspected: the descriptor keeps referring to this process even if its
        // number is reused.
        const FileDescriptor held(pidfd_open(process, 0));
        const bool canHold = held || errno == ESRCH; // else an old kernel, or a sandbox that forbids it
        if (!isApplication(process, identifier))
            return;
        if (held)
            pidfd_send_signal(held.get(), signal, nullptr, 0);
        else if (!canHold)
            kill(process, signal);
    }
};

} // namespace

std::unique_ptr<RunningApplications> makeRunningApplications()
{
    return std::make_unique<ProcessTable>();
}

} // namespace quorvane::platform
