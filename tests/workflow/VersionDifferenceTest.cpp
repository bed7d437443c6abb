#include "workflow/VersionDifference.h"
#include "tests/workflow/DocumentSandbox.h"
#include "workflow/DifferenceText.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

class VersionDifferenceTest : public testing::Test {
protected:
    // The version compared with, followed by the lines of the difference.
    std::vector<std::string> changesOf(std::int64_t number)
    {
        const auto found = differenceOfVersion(*journal, number);
        if (!found)
            return {"unknown"};
        std::vector<std::string> texts = differenceTexts(found->difference);
        texts.insert(texts.begin(),
            (found->since ? std::to_string(*found->since) : "nothing")
                + (found->isWholeStory ? "" : ", gap"));
        return texts;
    }

    std::int64_t record(const std::string& text)
    {
        history::NewVersion version;
        version.program = "test";
        version.bytes = text;
        return journal->record(version).value_or(-1);
    }

    using Lines = std::vector<std::string>;
    test::StoreSandbox box;
    std::unique_ptr<history::Journal> journal = history::Journal::open(
        box.folder.path("state"), box.locations.userRulesFile(), {}, test::silentLog());
};

const std::string lineA = R"(allow prefix "/a" "any" r "" "" "0")";
const std::string lineB = R"(allow prefix "/b" "any" r "" "" "0")";

} // namespace

TEST_F(VersionDifferenceTest, IsWhatTheVersionChanged)
{
    const std::int64_t first = record(lineA + "\n");
    const std::int64_t second = record(lineB + "\n");
    EXPECT_EQ(changesOf(first), (Lines{"nothing", "added: " + lineA}));
    EXPECT_EQ(changesOf(second), (Lines{std::to_string(first), "added: " + lineB, "removed: " + lineA}));
    EXPECT_EQ(changesOf(second + 1), Lines{"unknown"});
    EXPECT_EQ(changesOf(-1), Lines{"unknown"});
}

TEST_F(VersionDifferenceTest, IsOfTheRulesAsMeantWhereTheFileCouldNotHoldThem)
{
    const std::string meant = "allow prefix \"/\u00e9\" \"any\" r \"\" \"\" \"0\"";
    history::NewVersion version;
    version.bytes = "allow prefix \"/\u00e9\" \"any\" r \"\" \"\" \"";
    const std::string whole = meant + "\n";
    version.meant = whole;
    EXPECT_EQ(changesOf(journal->record(version).value_or(-1)), (Lines{"nothing", "added: " + meant}));
}

TEST_F(VersionDifferenceTest, OfTheOldestVersionKeptIsUnknown)
{
    record(lineA + "\n");
    const std::int64_t second = record(lineB + "\n");
    ASSERT_TRUE(journal->forgetBefore(second));
    EXPECT_EQ(changesOf(second), Lines{"unknown"});
}

} // namespace quorvane::workflow
