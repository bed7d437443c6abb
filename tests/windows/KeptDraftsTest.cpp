#include "windows/KeptDrafts.h"
#include "rules/RuleLine.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"
#include "windows/QtText.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::windows {

namespace {

class KeptDraftsTest : public testing::Test {
protected:
    KeptDrafts kept(const std::string& rulesFile = "/ann.rc") { return {toQt(state), rulesFile, log.log()}; }
    std::vector<std::filesystem::path> files() const
    {
        std::vector<std::filesystem::path> paths;
        if (std::filesystem::exists(state)) {
            for (const auto& entry : std::filesystem::directory_iterator(state))
                paths.push_back(entry.path());
        }
        return paths;
    }
    static unsigned permissions(const std::string& path)
    {
        struct stat status { };
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status.st_mode & 0777U;
    }

    test::TemporaryFolder folder;
    const std::string state = folder.path("home/state/quorvane");
    test::CapturedLog log;
};

const rules::PolicyRuleFields policyFields{.policyClass = 1,
    .policyType = 2,
    .path = ".jpg",
    .processName = "/bin/sh \"x\" \xF0\x9F\x94\x92",
    .tag = "t",
    .constraint = std::nullopt,
    .operations = 0x80000001U,
    .flags = 3,
    .created = 1'700'000'000};

workflow::RuleDraft draftWithPath(const std::string& path)
{
    return {.path = path};
}

} // namespace

TEST_F(KeptDraftsTest, GiveBackRuleAndDraftOfAPolicyRuleAsTheyWere)
{
    const workflow::RuleDraft draft{
        .policyClass = 0, .path = "/new\tpath", .processName = "", .constraint = "TEAM", .operations = 31};
    kept().keep({test::policyRule(policyFields), draft});
    const auto taken = kept().take();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].draft, draft);
    const auto& fields = policyRuleIn(taken[0].rule)->fields();
    EXPECT_EQ(ruleLine(fields), ruleLine(policyFields));
    EXPECT_TRUE(fields.constraint.isNull());
    EXPECT_EQ(fields.operations, policyFields.operations);
    EXPECT_EQ(fields.flags, 3U);
    EXPECT_FALSE(fields.system);
}

TEST_F(KeptDraftsTest, GiveBackAWatchRule)
{
    const rules::WatchRuleFields fields{
        .policyType = 1, .path = "/w", .processName = "any", .tag = "seen", .operations = 3};
    const workflow::RuleDraft draft{.policyType = 2, .path = ".w", .processName = "any", .operations = 1};
    kept().keep({test::watchRule(fields), draft});
    const auto taken = kept().take();
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].draft, draft);
    ASSERT_EQ(policyRuleIn(taken[0].rule), nullptr);
    EXPECT_EQ(ruleLine(std::get<rules::WatchRulePtr>(taken[0].rule)->fields()), ruleLine(fields));
}

TEST_F(KeptDraftsTest, AreTakenOnce)
{
    kept().keep({test::policyRule({}), {}});
    EXPECT_EQ(kept().count(), 1U);
    EXPECT_EQ(kept().take().size(), 1U);
    EXPECT_EQ(kept().count(), 0U);
    EXPECT_TRUE(kept().take().empty());
    EXPECT_TRUE(files().empty());
}

TEST_F(KeptDraftsTest, AreReadableForTheirUserAlone)
{
    const mode_t before = umask(0);
    kept().keep({test::policyRule({}), {}});
    umask(before);
    ASSERT_EQ(files().size(), 1U);
    EXPECT_EQ(permissions(files()[0]), 0600U);
    EXPECT_EQ(permissions(state), 0700U);
}

TEST_F(KeptDraftsTest, AreThoseOfTheirOwnRulesFile)
{
    kept("/ann.rc").keep({test::policyRule({}), {}});
    EXPECT_EQ(kept("/sandbox/ann.rc").count(), 0U);
    EXPECT_TRUE(kept("/sandbox/ann.rc").take().empty());
    EXPECT_EQ(kept("/ann.rc").count(), 1U);
}

TEST_F(KeptDraftsTest, ComeInTheOrderInWhichTheyWereKeptAndTheOldestGoWhenThereAreTooMany)
{
    for (int number = 0; number < 23; ++number)
        kept().keep({test::policyRule({}), draftWithPath(std::to_string(number))});
    const auto taken = kept().take();
    ASSERT_EQ(taken.size(), 20U);
    for (std::size_t number = 0; number < taken.size(); ++number)
        EXPECT_EQ(taken[number].draft.path, std::to_string(number + 3));
    EXPECT_EQ(log.lines().size(), 3U);
}

TEST_F(KeptDraftsTest, PassOverWhatIsNoDraftAndLeaveItAlone)
{
    kept().keep({test::policyRule({}), {}});
    const std::filesystem::path good = files().at(0);
    const std::string text = test::TemporaryFolder::contents(good);
    const std::string newer = [&] {
        std::string changed = text;
        return changed.replace(changed.find("\"format\": 1"), 11, "\"format\": 2");
    }();
    const struct {
        const char* name;
        std::string text;
    } others[] = {{"draft-0.json", ""}, {"draft-1.json", "{"}, {"draft-2.json", "[1]"},
        {"draft-3.json", R"({"format":1,"rulesFile":"/ann.rc"})"}, {"draft-4.json", newer},
        {"draft-5.json", std::string(3 << 20, ' ') + text}, {"other.json", text}};
    for (const auto& other : others)
        folder.write("home/state/quorvane/" + std::string(other.name), other.text);
    std::filesystem::create_symlink(good, state + "/draft-6.json");
    ASSERT_EQ(mkfifo((state + "/draft-7.json").c_str(), 0600), 0);
    EXPECT_EQ(kept().count(), 1U);
    EXPECT_EQ(kept().take().size(), 1U);
    EXPECT_EQ(files().size(), std::size(others) + 2);
}

TEST_F(KeptDraftsTest, ThatAreTooLongOrHaveNoFolderAreLoggedAndDropped)
{
    kept().keep({test::policyRule({}), draftWithPath(std::string(2 << 20, 'x'))});
    EXPECT_EQ(kept().count(), 0U);
    EXPECT_EQ(log.lines().back(), "could not keep an unsaved rule in '" + state + "'");
    folder.write("home/state", "in the way");
    kept().keep({test::policyRule({}), {}});
    EXPECT_EQ(log.lines().size(), 2U);
}

TEST_F(KeptDraftsTest, ThatCannotBeWrittenAreLogged)
{
    KeptDrafts unwritable(QStringLiteral("/proc/self"), "/ann.rc", log.log()); // also for root
    unwritable.keep({test::policyRule({}), {}});
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(log.lines()[0].starts_with("could not keep an unsaved rule: ")) << log.lines()[0];
}

TEST_F(KeptDraftsTest, AreNoneWithoutAFolderForThem)
{
    KeptDrafts homeless(QString(), "/ann.rc", log.log());
    homeless.keep({test::policyRule({}), {}});
    EXPECT_EQ(homeless.count(), 0U);
    EXPECT_EQ(log.lines().size(), 1U);
}

} // namespace quorvane::windows
