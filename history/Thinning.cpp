#include "history/Thinning.h"

#include <algorithm>
#include <limits>
#include <set>

namespace quorvane::history {

namespace {

constexpr std::int64_t hour = 3600; // seconds
constexpr std::int64_t day = 24 * hour;
constexpr std::uint64_t timeOfHourly = 30 * day;
constexpr std::uint64_t timeOfDaily = 365 * day;

// The versions with times corrected so that none is older than one recorded before it, or younger than the
// newest.
std::vector<DatedVersion> inOrderOfTime(std::vector<DatedVersion> versions)
{
    std::int64_t latest = std::numeric_limits<std::int64_t>::min();
    for (DatedVersion& version : versions) {
        latest = std::max(latest, version.time);
        version.time = std::min(latest, versions.back().time);
    }
    return versions;
}

} // namespace

// From the newest to the oldest, so that the first version met of an hour or a day is its newest one.
std::vector<std::int64_t> expiredVersions(const std::vector<DatedVersion>& versions, std::uint32_t days)
{
    std::vector<std::int64_t> expired;
    std::set<std::int64_t> hours;
    std::set<std::int64_t> dates;
    const std::vector<DatedVersion> ordered = inOrderOfTime(versions);
    for (auto version = ordered.rbegin(); version != ordered.rend(); ++version) {
        // Unsigned, since the difference of two times from a damaged file can overflow.
        const std::uint64_t age
            = static_cast<std::uint64_t>(ordered.back().time) - static_cast<std::uint64_t>(version->time);
        const bool isKept = age <= std::uint64_t{days} * day
            || (age <= timeOfHourly && hours.insert(version->time / hour).second)
            || (age > timeOfHourly && age <= timeOfDaily && dates.insert(version->time / day).second);
        if (!isKept)
            expired.push_back(version->number);
    }
    return expired;
}

} // namespace quorvane::history
