#include "workflow/AsideRules.h"

#include "tests/rules/StoreSandbox.h"
#include "workflow/DifferenceText.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include <sys/stat.h>

namespace quorvane::workflow {

namespace {

rules::RuleValue asideRule(const std::string& path, const std::string& tag = "", std::uint64_t created = 0)
{
    return valueOf(test::policyRule(
        {.path = path, .processName = "/bin/sh", .tag = tag, .operations = 1, .created = created}));
}

class AsideRulesTest : public testing::Test {
protected:
    AsideRules aside() const { return {box.folder.path("state/quorvane"), box.locations.userRulesFile()}; }
    std::string listed() const
    {
        std::string lines;
        for (const rules::RuleValue& each : aside().read().rules)
            lines += ruleText(each) + "\n";
        return lines;
    }
    static std::string line(const rules::RuleValue& value) { return ruleText(value) + "\n"; }
    // Puts something else at the path of the file.
    void blockFile() const { std::filesystem::create_directories(aside().file() + "/x"); }

    test::StoreSandbox box;
};

} // namespace

TEST_F(AsideRulesTest, HoldsNothingAtFirstAndMakesNoFile)
{
    EXPECT_EQ(listed(), "");
    EXPECT_EQ(aside().read().problem, std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(box.folder.path("state")));
}

TEST_F(AsideRulesTest, KeepsTagDateAndLettersBeyondAscii)
{
    const rules::RuleValue kept = asideRule("/K\u00e4se/", "t\u00e4g", 7);
    EXPECT_EQ(aside().add({kept}), std::nullopt);
    EXPECT_EQ(listed(), line(kept));
}

TEST_F(AsideRulesTest, AddsBehindWhatIsThereAndRenewsEqualRules)
{
    EXPECT_EQ(aside().add({asideRule("/a", "old"), asideRule("/b")}), std::nullopt);
    EXPECT_EQ(aside().add({asideRule("/c"), asideRule("/a", "new")}), std::nullopt);
    EXPECT_EQ(listed(), line(asideRule("/b")) + line(asideRule("/c")) + line(asideRule("/a", "new")));
}

TEST_F(AsideRulesTest, RemovesEqualRules)
{
    EXPECT_EQ(aside().add({asideRule("/a", "t"), asideRule("/b")}), std::nullopt);
    EXPECT_EQ(aside().remove({asideRule("/a", "other"), asideRule("/z")}), std::nullopt);
    EXPECT_EQ(listed(), line(asideRule("/b")));
}

TEST_F(AsideRulesTest, IsForItsOwnerAlone)
{
    EXPECT_EQ(aside().add({asideRule("/a")}), std::nullopt);
    struct stat status { };
    ASSERT_EQ(stat(aside().file().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(box.folder.path("state/quorvane").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

TEST_F(AsideRulesTest, BelongsToOneRulesFile)
{
    EXPECT_EQ(aside().add({asideRule("/a")}), std::nullopt);
    const AsideRules other(box.folder.path("state/quorvane"), box.folder.path("other.rc"));
    EXPECT_TRUE(other.read().rules.empty());
}

TEST_F(AsideRulesTest, RefusesWhatNoRulesFileHolds)
{
    EXPECT_NE(aside().add({asideRule("/a"), asideRule("/quote\"")}), std::nullopt);
    EXPECT_EQ(listed(), "");
}

TEST_F(AsideRulesTest, SaysWhyNothingCouldBeAdded)
{
    blockFile();
    EXPECT_NE(aside().add({asideRule("/a")}), std::nullopt);
    EXPECT_NE(AsideRules("", box.locations.userRulesFile()).add({asideRule("/a")}), std::nullopt);
}

TEST_F(AsideRulesTest, NeverWritesOverWhatItCouldNotRead)
{
    EXPECT_EQ(aside().add({asideRule("/a")}), std::nullopt);
    const std::string broken = line(asideRule("/a")) + "allow \xff\n";
    box.folder.write(aside().file().substr(box.folder.path().size() + 1), broken);
    EXPECT_NE(aside().read().problem, std::nullopt);
    EXPECT_NE(aside().add({asideRule("/b")}), std::nullopt);
    EXPECT_NE(aside().remove({asideRule("/a")}), std::nullopt);
    EXPECT_EQ(test::TemporaryFolder::contents(aside().file()), broken);
}

TEST_F(AsideRulesTest, LosesNothingWhenManyAddAtOnce)
{
    std::atomic<int> failures = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([this, thread, &failures] {
            for (int count = 0; count < 5; ++count)
                failures
                    += aside().add({asideRule("/" + std::to_string(thread) + "/" + std::to_string(count))})
                    ? 1
                    : 0;
        });
    }
    for (std::thread& each : threads)
        each.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(aside().read().rules.size(), 40U);
}

} // namespace quorvane::workflow
