#include "tests/windows/EditorTable.h"

#include <QMenu>

namespace quorvane::windows {

namespace {

class LikeSelectionTest : public test::EditorTable {
protected:
    LikeSelectionTest()
    {
        open("allow path \"/nonexistent/a\" \"/bin/sh\" r \"one\" \"\" \"0\"\n"
             "allow path \"/tmp/\" \"/bin/sh\" r \"two\" \"\" \"0\"\n"
             "deny path \"/nonexistent/c\" \"/bin/sh\" w \"one\" \"\" \"0\"\n");
    }
    void chooseSame(const char* trait) const
    {
        for (QAction* item : in<QMenu>("selectByMenu")->actions()) {
            if (item->text().remove(QLatin1Char('&')) == QLatin1String("Same ") + QLatin1String(trait))
                return item->trigger();
        }
        FAIL() << trait;
    }
    testing::AssertionResult selects(const char* paths) const
    {
        return QTest::qWaitFor([&] { return selectedPaths() == QLatin1String(paths); })
            ? testing::AssertionSuccess()
            : testing::AssertionFailure() << selectedPaths().toStdString();
    }
};

} // namespace

TEST_F(LikeSelectionTest, SelectsRulesWithTheSameTag)
{
    select({0});
    chooseSame("Tag");
    EXPECT_TRUE(selects("/nonexistent/a /nonexistent/c"));
}

TEST_F(LikeSelectionTest, SelectsRulesWithTheSameProblemOnceProblemsAreFound)
{
    select({2});
    chooseSame("Problem");
    EXPECT_TRUE(selects("/nonexistent/a /nonexistent/c"));
}

TEST_F(LikeSelectionTest, SaysThatTheSelectedRuleHasNoProblemAndKeepsItSelected)
{
    select({1});
    chooseSame("Problem");
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return notice() == QStringLiteral("The selected rules have no problem."); }));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/tmp/"));
}

} // namespace quorvane::windows
