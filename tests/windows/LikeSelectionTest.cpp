#include "tests/windows/EditorTable.h"
#include "windows/ProblemsPanel.h"

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

TEST_F(LikeSelectionTest, KnowsEveryTraitOfARule)
{
    select({1});
    chooseSame("Class");
    EXPECT_TRUE(selects("/nonexistent/a /tmp/"));
    select({1});
    chooseSame("Tag");
    EXPECT_TRUE(selects("/tmp/"));
    for (const char* trait : {"Type", "State", "Program"}) {
        select({1});
        chooseSame(trait);
        EXPECT_TRUE(selects("/nonexistent/a /tmp/ /nonexistent/c")) << trait;
    }
}

TEST_F(LikeSelectionTest, SelectsByTheChoiceThatWasMadeLast)
{
    select({0});
    chooseSame("Problem"); // which takes longer
    chooseSame("Class");
    EXPECT_TRUE(selects("/nonexistent/a /tmp/"));
    const auto* status = window->findChild<ProblemsPanel*>()->findChild<QLabel*>();
    ASSERT_TRUE(QTest::qWaitFor([&] { return status->text() == QStringLiteral("2 problems."); }));
    constexpr int longEnough = 300; // milliseconds
    EXPECT_FALSE(QTest::qWaitFor(
        [this] { return selectedPaths() != QStringLiteral("/nonexistent/a /tmp/"); }, longEnough));
}

TEST_F(LikeSelectionTest, IsOfferedWhereSomethingIsSelected)
{
    auto* menu = in<QMenu>("selectByMenu");
    const auto areEnabled = [menu] {
        int enabled = 0;
        for (const QAction* item : menu->actions())
            enabled += item->isEnabled() ? 1 : 0;
        return enabled;
    };
    table->clearSelection();
    Q_EMIT menu->aboutToShow();
    EXPECT_EQ(areEnabled(), 0);
    Q_EMIT menu->aboutToHide();
    EXPECT_EQ(areEnabled(), 6) << "for the shortcuts";
    select({0});
    Q_EMIT menu->aboutToShow();
    EXPECT_EQ(areEnabled(), 6);
}

} // namespace quorvane::windows
