#include "windows/RulesFileFollower.h"

#include "tests/rules/StoreSandbox.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/TestDocument.h"
#include "workflow/RunState.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::windows {

namespace {

class RulesFileFollowerTest : public testing::Test {
protected:
    RulesFileFollowerTest() { application.terminations = 1; } // so that nothing is started again

    test::StoreSandbox box;
    const std::unique_ptr<rules::RuleManager> store = box.emptyStore();
    workflow::RunState run;
    test::TestDocument document{*store, run};
    test::FakeApplication application;
    RulesFileFollower follower{document, application, run, test::silentLog()};
};

} // namespace

TEST_F(RulesFileFollowerTest, TellsOfAFileThatCannotBeOpened)
{
    std::filesystem::create_symlink(box.folder.write("elsewhere", ""), box.locations.userRulesFile());
    follower.checkFile();
    ASSERT_EQ(application.notices.size(), 1U);
    EXPECT_TRUE(application.notices[0].waited);
    EXPECT_FALSE(application.notices[0].header.empty());
    EXPECT_NE(application.notices[0].message.find("could not access your rules file"), std::string::npos);
    EXPECT_EQ(application.terminations, 1) << "the program ends already";
}

TEST_F(RulesFileFollowerTest, SaysNothingOfAFileThatIsThereOrNotYet)
{
    follower.checkFile();
    box.writeUserRules("");
    follower.checkFile();
    EXPECT_TRUE(application.notices.empty());
}

} // namespace quorvane::windows
