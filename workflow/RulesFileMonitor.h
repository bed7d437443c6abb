#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

struct RunState;

// When the contents of what is at `path` last changed, in whole seconds since 1970; none when that cannot be
// told. A symbolic link answers for itself: a rules file that is one is refused, wherever it leads.
std::optional<std::uint64_t> modificationTime(const std::string& path);

// Finds out, look by look, that somebody else has changed the user's rules file. For one thread at a time;
// the run's internalWrite may be set from any.
class RulesFileMonitor {
public:
    // Both must outlive it.
    RulesFileMonitor(RunState& run, platform::Log& log);

    // Takes one look, which found the file changed at `time`: true when the store has to be reloaded. The
    // first time seen is no reason for that, and no file is none. Deliberate: after the program has written
    // the file or reloaded the table, whatever time the file has is taken for the program's own doing, also
    // when somebody else has changed it meanwhile.
    bool monitorFileModification(std::optional<std::uint64_t> time);

    // Whether the last look took whatever it saw for the program's own doing.
    bool hasAbsorbed() const { return m_hasAbsorbed; }

    // As last seen; 0 before.
    std::uint64_t lastModificationTime() const { return m_lastModificationTime; }

private:
    RunState& m_run;
    platform::Log& m_log;
    std::uint64_t m_lastModificationTime = 0;
    bool m_hasAbsorbed = false;
};

} // namespace quorvane::workflow
