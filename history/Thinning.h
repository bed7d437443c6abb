#pragma once

#include <cstdint>
#include <vector>

namespace quorvane::history {

struct DatedVersion {
    std::int64_t number = 0;
    std::int64_t time = 0; // seconds since 1970
};

// The versions that are too old to be kept, from all versions, oldest first. Kept are all of the last `days`,
// then the newest of each hour for 30 days and the newest of each day for a year, and the newest of all. Ages
// are measured from the newest version: the clock may be wrong, or may have been when a version was recorded.
// A version dated later than the newest counts as of age 0, one dated earlier than those before it as just as
// old as these. Pure; any thread.
std::vector<std::int64_t> expiredVersions(const std::vector<DatedVersion>& versions, std::uint32_t days);

} // namespace quorvane::history
