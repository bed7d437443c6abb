#include "history/UndoOrder.h"

#include <gtest/gtest.h>

namespace quorvane::history {

namespace {

using Kind = VersionKind;

JournalVersion action(std::int64_t number, std::uint64_t added, std::uint64_t removed, std::uint64_t changed)
{
    return {.number = number, .added = added, .removed = removed, .changed = changed};
}

JournalVersion moved(std::int64_t number, Kind kind, std::optional<std::int64_t> of)
{
    return {.number = number, .kind = kind, .of = of};
}

} // namespace

TEST(UndoOrder, OffersWhateverChangedARule)
{
    EXPECT_EQ(undoOrder({action(1, 1, 0, 0)}).undo, 1);
    EXPECT_EQ(undoOrder({action(1, 0, 1, 0)}).undo, 1);
    EXPECT_EQ(undoOrder({action(1, 0, 0, 1)}).undo, 1);
    EXPECT_EQ(undoOrder({action(1, 1, 1, 0)}).undo, 1);
    EXPECT_EQ(undoOrder({action(1, 1, 0, 1)}).undo, 1);
    EXPECT_EQ(undoOrder({action(1, 0, 1, 1)}).undo, 1);
    EXPECT_EQ(undoOrder({action(1, 0, 0, 0)}).undo, std::nullopt);
    EXPECT_EQ(undoOrder({}).undo, std::nullopt);
}

TEST(UndoOrder, TakesNoVersionOfAnotherProgramForAnAction)
{
    JournalVersion foreign = action(2, 1, 0, 0);
    foreign.kind = Kind::foreign;
    EXPECT_EQ(undoOrder({action(1, 1, 0, 0), foreign}).undo, 1);
    EXPECT_EQ(undoOrder({moved(1, Kind::undo, std::nullopt)}).redo, std::nullopt) << "of no known version";
    EXPECT_EQ(undoOrder({moved(1, Kind::redo, std::nullopt)}).undo, std::nullopt);
}

TEST(UndoOrder, MovesAnActionThatIsNotTheLastOne)
{
    const std::vector<JournalVersion> both{action(1, 1, 0, 0), action(2, 1, 0, 0)};
    auto versions = both;
    versions.push_back(moved(3, Kind::undo, 1));
    EXPECT_EQ(undoOrder(versions).undo, 2);
    EXPECT_EQ(undoOrder(versions).redo, 1);
    versions.push_back(moved(4, Kind::redo, 1));
    EXPECT_EQ(undoOrder(versions).undo, 1);
    EXPECT_EQ(undoOrder(versions).redo, std::nullopt);
}

} // namespace quorvane::history
