#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

struct RunState;

// The modification time of the file at `path`, in whole seconds since 1970; none when it cannot be
// determined. Of a symbolic link, that of the link: a rules file that is a link is refused, wherever it
// leads.
std::optional<std::uint64_t> modificationTime(const std::string& path);

// Detects by polling that another process has changed the user's rules file. One thread at a time; the run's
// internalWrite may be set from any.
class RulesFileMonitor {
public:
    // Both must outlive it.
    RulesFileMonitor(RunState& run, platform::Log& log);

    // One poll, which found the modification time `time`: true when the store must be reloaded. The first
    // time seen does not cause that, nor does a missing file. Deliberate: after the program has written the
    // file or reloaded the table, any time of the file counts as its own change, even if another process has
    // changed it in the meantime.
    bool monitorFileModification(std::optional<std::uint64_t> time);

    // Whether the last poll attributed whatever it saw to the program itself.
    bool hasAbsorbed() const { return m_hasAbsorbed; }

    // As last polled; 0 before the first.
    std::uint64_t lastModificationTime() const { return m_lastModificationTime; }

private:
    RunState& m_run;
    platform::Log& m_log;
    std::uint64_t m_lastModificationTime = 0;
    bool m_hasAbsorbed = false;
};

} // namespace quorvane::workflow
