#include "windows/ProblemsFinder.h"

#include "rules/RuleCodes.h"
#include "tests/rules/StoreSandbox.h"
#include "tests/support/EnvironmentVariable.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

using workflow::FindingKind;

class ProblemsFinderTest : public testing::Test {
protected:
    void add(const std::string& path, std::int32_t ruleClass = rules::PolicyClass::allow) const
    {
        store->addPolicyRule(test::policyRule(
            {.policyClass = ruleClass, .path = path, .processName = "any", .operations = 1}));
    }
    // Whatever is being looked for is found.
    void await() const
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !finder.isLooking(); }));
    }
    std::size_t count(FindingKind kind) const { return finder.problems()->of(kind).size(); }

    test::StoreSandbox box;
    const std::unique_ptr<rules::RuleManager> store = box.emptyStore();
    ProblemsFinder finder{*store};
    QSignalSpy found{&finder, &ProblemsFinder::found};
};

} // namespace

TEST_F(ProblemsFinderTest, LooksOnceItIsStarted)
{
    add("/nonexistent/a");
    finder.rulesDidChange();
    EXPECT_FALSE(finder.isLooking());
    EXPECT_EQ(finder.problems(), nullptr);
    finder.start();
    EXPECT_TRUE(finder.isLooking());
    finder.start();
    await();
    EXPECT_EQ(found.size(), 1) << "a second start asks for nothing";
    EXPECT_EQ(count(FindingKind::missingPath), 1U);
    finder.start();
    EXPECT_FALSE(finder.isLooking());
}

TEST_F(ProblemsFinderTest, LooksAgainForWhatHasChangedMeanwhile)
{
    add("/nonexistent/a");
    finder.start();
    add("/nonexistent/b");
    finder.rulesDidChange();
    add("/nonexistent/c");
    finder.rulesDidChange();
    ASSERT_TRUE(found.wait());
    EXPECT_TRUE(finder.isLooking()) << "what is found is of earlier rules";
    EXPECT_EQ(count(FindingKind::missingPath), 1U);
    await();
    EXPECT_EQ(found.size(), 2);
    EXPECT_EQ(count(FindingKind::missingPath), 3U);
}

TEST_F(ProblemsFinderTest, FindsOverlapsWhileAnyoneAsksForThem)
{
    add("/a");
    add("/a", rules::PolicyClass::deny);
    finder.start();
    await();
    EXPECT_EQ(count(FindingKind::overlap), 0U);
    const QObject one;
    const QObject other;
    finder.setFindsOverlaps(one, true);
    await();
    EXPECT_EQ(count(FindingKind::overlap), 1U);
    const auto before = found.size();
    finder.setFindsOverlaps(other, true);
    finder.setFindsOverlaps(one, false);
    EXPECT_FALSE(finder.isLooking()) << "somebody still asks";
    EXPECT_EQ(found.size(), before);
    finder.setFindsOverlaps(other, false);
    await();
    EXPECT_EQ(count(FindingKind::overlap), 0U);
}

TEST_F(ProblemsFinderTest, LooksAtFilesAgainOnlyWhenItIsAskedTo)
{
    const test::EnvironmentVariable home("HOME", box.folder.path());
    add("~/one");
    finder.start();
    await();
    EXPECT_EQ(count(FindingKind::missingPath), 1U);
    box.folder.write("one", "");
    finder.rulesDidChange();
    await();
    EXPECT_EQ(count(FindingKind::missingPath), 1U);
    finder.lookAgain();
    await();
    EXPECT_EQ(count(FindingKind::missingPath), 0U);
}

TEST_F(ProblemsFinderTest, LooksInItsPlace)
{
    add("/nonexistent/a");
    finder.start();
    finder.setPlace(workflow::RulesPlace::nowhere());
    await();
    EXPECT_EQ(found.size(), 1) << "what was found in the former place does not count";
    EXPECT_EQ(count(FindingKind::missingPath), 0U);
}

} // namespace quorvane::windows
