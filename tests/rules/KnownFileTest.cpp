#include "rules/KnownFile.h"

#include "rules/RulesFile.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane {

TEST(KnownFile, OfAFileWithTheseBytesIsWhatAReadingGives)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");

    const auto known = KnownFile::ofFileWith(path, "text");

    ASSERT_TRUE(known);
    EXPECT_EQ(known->path, path);
    EXPECT_EQ(known->identity, KnownFile::of(path, RulesFileText::read(path)).identity);
    EXPECT_TRUE(known->isStillThere());
}

TEST(KnownFile, OfAFileWithOtherBytesIsNone)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");

    for (const char* bytes : {"", "tex", "texx", "text\n"})
        EXPECT_FALSE(KnownFile::ofFileWith(path, bytes)) << bytes;
    EXPECT_FALSE(KnownFile::ofFileWith(folder.path("missing"), ""));
    EXPECT_FALSE(KnownFile::ofFileWith(folder.path(), ""));
}

TEST(KnownFile, SeesAChangeThatLeavesSizeAndTimesInThatInstant)
{
    const TemporaryFolder folder;
    const std::string path = folder.write("rules", "text");
    auto known = KnownFile::ofFileWith(path, "text");
    ASSERT_TRUE(known);
    ASSERT_TRUE(known->hash) << "it was written a moment ago";

    folder.write("rules", "next");
    std::error_code error;
    known->identity = FileIdentity::ofPath(path, error); // a clock too coarse to tell

    EXPECT_FALSE(known->isStillThere());
}

} // namespace quorvane
