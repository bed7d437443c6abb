#include "rules/KnownFile.h"

#include "rules/RulesFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string_view>
#include <thread>

namespace quorvane::rules {

namespace {

// So long that a change would get another time stamp.
void waitUntilAfter(std::chrono::system_clock::time_point time)
{
    const auto later = time + 3 * KnownFile::usualRoughness;
    while (std::chrono::system_clock::now() < later)
        std::this_thread::yield();
}

} // namespace

TEST(KnownFile, OfAFileWithTheseBytesIsWhatAReadingGives)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");

    auto known = KnownFile::ofFileWith(path, "text");

    ASSERT_TRUE(known);
    EXPECT_EQ(known->path, path);
    EXPECT_EQ(known->identity, KnownFile::of(path, RulesFileText::read(path)).identity);
    EXPECT_TRUE(known->isStillThere());
}

TEST(KnownFile, OfAFileWithOtherBytesIsNone)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");

    for (const char* bytes : {"", "tex", "texx", "text\n"})
        EXPECT_FALSE(KnownFile::ofFileWith(path, bytes)) << bytes;
    EXPECT_FALSE(KnownFile::ofFileWith(folder.path("missing"), ""));
    EXPECT_FALSE(KnownFile::ofFileWith(folder.path(), ""));
}

TEST(KnownFile, IsAsSureOfATextThatWasReadLongAgo)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.path("rules");
    const auto read = [&] {
        folder.write("rules", "text");
        return RulesFileText::read(path);
    };
    RulesFileText text = read();
    while (text.lookedAt().time_since_epoch() - std::chrono::nanoseconds(text.identity()->changed)
        >= KnownFile::usualRoughness)
        text = read(); // a busy machine
    waitUntilAfter(text.lookedAt());

    EXPECT_TRUE(KnownFile::of(path, text).hash) << "a change right after the reading may bear the same time";
}

TEST(KnownFile, SeesAChangeThatLeavesSizeAndTimesInThatInstant)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");
    auto known = KnownFile::ofFileWith(path, "text");
    ASSERT_TRUE(known);
    ASSERT_TRUE(known->hash) << "it was written a moment ago";

    folder.write("rules", "next");
    std::error_code error;
    known->identity = platform::FileIdentity::ofPath(path, error); // a clock too coarse to distinguish

    EXPECT_FALSE(known->isStillThere());
}

TEST(KnownFile, IsReadOnlyUntilALaterChangeWouldShowInItsTimes)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");
    auto known = KnownFile::ofFileWith(path, "text");
    ASSERT_TRUE(known);
    known->hash = std::hash<std::string_view>{}("text"); // also on a machine that was too busy to need it
    waitUntilAfter(std::chrono::system_clock::now());

    EXPECT_TRUE(known->isStillThere());
    EXPECT_FALSE(known->hash);
    folder.write("rules", "next");
    EXPECT_FALSE(known->isStillThere());
}

} // namespace quorvane::rules
