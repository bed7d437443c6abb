#include "workflow/RulesFileMonitor.h"

#include "platform/Log.h"
#include "workflow/RunState.h"

#include <utility>

#include <sys/stat.h>

namespace quorvane::workflow {

std::optional<std::uint64_t> modificationTime(const std::string& path)
{
    struct stat status { };
    if (lstat(path.c_str(), &status) != 0)
        return std::nullopt;
    return static_cast<std::uint64_t>(status.st_mtim.tv_sec);
}

RulesFileMonitor::RulesFileMonitor(RunState& run, platform::Log& log)
    : m_run(run)
    , m_log(log)
{
}

bool RulesFileMonitor::monitorFileModification(std::optional<std::uint64_t> time)
{
    m_hasAbsorbed = false;
    if (!time)
        return false;
    const std::uint64_t before = std::exchange(m_lastModificationTime, *time);
    m_hasAbsorbed = m_run.internalWrite.exchange(false);
    if (m_hasAbsorbed || m_run.writesUnderWay > 0 || before == 0 || before == *time)
        return false;
    m_log.write(
        "reloading data on file modification " + std::to_string(before) + " <=> " + std::to_string(*time));
    return true;
}

} // namespace quorvane::workflow
