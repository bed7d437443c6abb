#include "history/Thinning.h"

#include "tests/history/Hours.h"

#include <gtest/gtest.h>

#include <limits>

namespace quorvane::history {

namespace {

constexpr std::int64_t now = 20000 * test::day;

using Numbers = std::vector<std::int64_t>;

// The expired ones of versions recorded at these times, numbered from 1.
Numbers expired(const Numbers& times, std::uint32_t days = 7)
{
    std::vector<DatedVersion> versions;
    for (const std::int64_t time : times)
        versions.push_back({static_cast<std::int64_t>(versions.size()) + 1, time});
    return expiredVersions(versions, days);
}

} // namespace

TEST(Thinning, KeepsEveryVersionOfTheLastDays)
{
    EXPECT_EQ(expired({now - 7 * test::day, now - 7 * test::day + 1, now - 1, now - 1, now}), Numbers{});
    EXPECT_EQ(expired({}), Numbers{});
}

TEST(Thinning, KeepsTheNewestOfEachHourForThirtyDays)
{
    const std::int64_t early = now - 10 * test::day;
    EXPECT_EQ(expired({early, early + 1, early + test::hour - 1, early + test::hour, now}), (Numbers{2, 1}));
    EXPECT_EQ(expired({now - 30 * test::day, now - 30 * test::day + test::hour, now}), Numbers{});
}

TEST(Thinning, KeepsTheNewestOfEachDayForAYearAndNothingOlder)
{
    const std::int64_t early = now - 100 * test::day;
    EXPECT_EQ(expired({early, early + test::hour, early + 2 * test::hour, early + test::day, now}),
        (Numbers{2, 1}));
    EXPECT_EQ(expired({now - 365 * test::day - 1, now - 365 * test::day, now}), Numbers{1});
}

TEST(Thinning, TakesItsDaysFromTheSettings)
{
    EXPECT_EQ(expired({now - 2, now - 1, now}, 0), Numbers{1}) << "the first two are of one hour";
    EXPECT_EQ(expired({now - 400 * test::day, now - 400 * test::day, now}, 400), Numbers{});
}

TEST(Thinning, MeasuresAgesFromTheNewestVersionWhateverTheClockSays)
{
    EXPECT_EQ(expired({now, now, now - 500 * test::day}), Numbers{}) << "the clock went back";
    EXPECT_EQ(expired({now, now, now + 500 * test::day}), (Numbers{2, 1}));
}

TEST(Thinning, TakesNoVersionForOlderThanOneMadeBeforeIt)
{
    EXPECT_EQ(expired({now, now - 500 * test::day, now - 900 * test::day, now + test::day}), Numbers{});
    EXPECT_EQ(expired({now - 800 * test::day, now - 900 * test::day, now - 500 * test::day, now}),
        (Numbers{3, 2, 1}));
}

TEST(Thinning, TakesAnyTimes)
{
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(expired({lowest, highest}), Numbers{1});
    EXPECT_EQ(expired({highest, lowest}), Numbers{});
}

} // namespace quorvane::history
