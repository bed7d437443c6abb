#include "workflow/UndoSteps.h"

#include "tests/support/TestRules.h"
#include "workflow/RuleEdits.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace quorvane::workflow {

namespace {

// Records a step that changed something; returns its number.
std::uint64_t remember(
    UndoSteps& steps, const std::string& action, ChangeReason::Kind kind = ChangeReason::Kind::action)
{
    return steps.remember(
        std::make_shared<const rules::ChangeSet>(additionOf(test::policyRule({.path = "/" + action}))),
        {.action = action, .kind = kind});
}

std::string nameOf(const UndoSteps::Step* step)
{
    return step == nullptr ? "none" : step->reason.action;
}

} // namespace

TEST(UndoSteps, GoBackAndForthFromTheNewest)
{
    UndoSteps steps;
    remember(steps, "one");
    remember(steps, "two");
    EXPECT_EQ(nameOf(steps.toUndo()), "two");
    EXPECT_EQ(steps.toRedo(), nullptr);

    remember(steps, "two", ChangeReason::Kind::undo);
    EXPECT_EQ(nameOf(steps.toUndo()), "one");
    EXPECT_EQ(nameOf(steps.toRedo()), "two");

    remember(steps, "two", ChangeReason::Kind::redo);
    EXPECT_EQ(nameOf(steps.toUndo()), "two");
    EXPECT_EQ(steps.toRedo(), nullptr);
}

TEST(UndoSteps, LeaveNothingToDoAgainAfterANewAction)
{
    UndoSteps steps;
    remember(steps, "one");
    remember(steps, "one", ChangeReason::Kind::undo);
    remember(steps, "two");
    EXPECT_EQ(steps.toRedo(), nullptr);
    EXPECT_EQ(nameOf(steps.toUndo()), "two");
}

TEST(UndoSteps, LeaveOutWhatChangedNothing)
{
    UndoSteps steps;
    EXPECT_EQ(steps.remember(std::make_shared<const rules::ChangeSet>(), {.action = "nothing"}), 0U);
    EXPECT_EQ(steps.toUndo(), nullptr);
}

TEST(UndoSteps, KnowTheVersionThatAnActionHasBecome)
{
    UndoSteps steps;
    const std::uint64_t number = remember(steps, "one");
    remember(steps, "two");
    steps.noteVersion(number, 7);
    EXPECT_EQ(steps.toUndo()->version, std::nullopt);
    remember(steps, "two", ChangeReason::Kind::undo);
    EXPECT_EQ(steps.toUndo()->version, 7);
}

TEST(UndoSteps, KnowTheVersionOfAnActionThatWasUndoneOrRedoneBeforeItHadOne)
{
    UndoSteps steps;
    const std::uint64_t number = remember(steps, "one");
    EXPECT_EQ(remember(steps, "one", ChangeReason::Kind::undo), number);
    steps.noteVersion(number, 7);
    EXPECT_EQ(steps.toRedo()->version, 7);
    EXPECT_EQ(remember(steps, "one", ChangeReason::Kind::redo), number);
    EXPECT_EQ(steps.toUndo()->version, 7);
    EXPECT_NE(remember(steps, "two"), number);
}

TEST(UndoSteps, AreForgottenWhenThereAreMoreThanFifty)
{
    UndoSteps steps;
    for (int number = 1; number <= 51; ++number)
        remember(steps, std::to_string(number));
    int left = 0;
    for (; steps.toUndo() != nullptr; ++left)
        remember(steps, nameOf(steps.toUndo()), ChangeReason::Kind::undo);
    EXPECT_EQ(left, 50);
    EXPECT_EQ(nameOf(steps.toRedo()), "2");

    steps.forget();
    EXPECT_EQ(steps.toRedo(), nullptr);
}

} // namespace quorvane::workflow
