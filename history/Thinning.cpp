#include "history/Thinning.h"

#include <set>

namespace quorvane {

namespace {

constexpr std::int64_t hour = 3600; // seconds
constexpr std::int64_t day = 24 * hour;
constexpr std::uint64_t timeOfHourly = 30 * day;
constexpr std::uint64_t timeOfDaily = 365 * day;

} // namespace

std::vector<std::int64_t> expiredVersions(const std::vector<DatedVersion>& versions, std::uint32_t days)
{
    std::vector<std::int64_t> expired;
    std::set<std::int64_t> hours;
    std::set<std::int64_t> dates;
    for (auto version = versions.rbegin(); version != versions.rend(); ++version) {
        const std::int64_t newest = versions.back().time;
        // Without a sign, since the difference of two times out of a damaged file can be any.
        const std::uint64_t age = version->time >= newest
            ? 0
            : static_cast<std::uint64_t>(newest) - static_cast<std::uint64_t>(version->time);
        const bool isKept = age <= std::uint64_t{days} * day
            || (age <= timeOfHourly && hours.insert(version->time / hour).second)
            || (age > timeOfHourly && age <= timeOfDaily && dates.insert(version->time / day).second);
        if (!isKept)
            expired.push_back(version->number);
    }
    return expired;
}

} // namespace quorvane
