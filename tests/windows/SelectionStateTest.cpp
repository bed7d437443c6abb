#include "windows/SelectionState.h"

#include "tests/windows/EditorTable.h"
#include "windows/RulesTableModel.h"

#include <QScrollBar>

namespace quorvane::windows {

namespace {

class SelectionStateTest : public test::EditorTable {
protected:
    SelectionStateTest()
    {
        std::string many;
        for (int rule = 0; rule < 100; ++rule)
            many += "allow prefix \"/" + std::to_string(100 + rule) + "/\" \"/bin/sh\" r \"\" \"\" \"0\"\n";
        open(many);
        model = qobject_cast<RulesTableModel*>(table->model());
    }
    // Removes the rules from `first` up to, not including, `end` while the state is kept.
    void removeMeanwhile(std::size_t first, std::size_t end)
    {
        const SelectionState state(*table, *model);
        const std::vector<rules::RuleRef> rules = store->allRules();
        for (std::size_t rule = first; rule < end; ++rule)
            store->deletePolicyRule(*std::get<rules::PolicyRulePtr>(rules[rule]));
        model->reload();
        table->clearSelection();
        state.restore(*table, *model);
    }

    RulesTableModel* model = nullptr;
};

} // namespace

TEST_F(SelectionStateTest, SelectsTheSameRulesInAllTheirRuns)
{
    select({11, 99, 4, 3, 9, 5}); // in whatever order
    table->selectionModel()->setCurrentIndex(
        cell(9, workflow::RuleColumn::path), QItemSelectionModel::NoUpdate);
    removeMeanwhile(0, 1);
    EXPECT_EQ(selectedRows(), (QList<int>{2, 3, 4, 8, 10, 98}));
    EXPECT_EQ(table->currentIndex().row(), 8);
    removeMeanwhile(3, 4); // in the middle of a run
    EXPECT_EQ(selectedRows(), (QList<int>{2, 3, 7, 9, 97}));
    removeMeanwhile(7, 8); // the current one
    EXPECT_EQ(selectedRows(), (QList<int>{2, 3, 8, 96}));
}

TEST_F(SelectionStateTest, LeavesOutTheCurrentRuleBetweenSelectedOnes)
{
    select({3, 5});
    table->selectionModel()->setCurrentIndex(
        cell(4, workflow::RuleColumn::path), QItemSelectionModel::NoUpdate);
    removeMeanwhile(0, 1);
    EXPECT_EQ(selectedRows(), (QList<int>{2, 4}));
    EXPECT_EQ(table->currentIndex().row(), 3);
}

TEST_F(SelectionStateTest, KeepsTheTopmostRuleAtTheTop)
{
    table->verticalScrollBar()->setValue(30);
    ASSERT_EQ(table->rowAt(0), 30);
    removeMeanwhile(0, 5);
    EXPECT_EQ(table->rowAt(0), 25);
    removeMeanwhile(25, 26); // that rule itself
    EXPECT_EQ(table->rowAt(0), 25) << "the row stays";
}

TEST_F(SelectionStateTest, StaysAtTheTopWhateverComesThere)
{
    const SelectionState state(*table, *model);
    store->sortIndexUsingDescriptors({{rules::SortKey::path, false}});
    model->reload();
    ASSERT_EQ(text(0, workflow::RuleColumn::path), QStringLiteral("/199/"));
    state.restore(*table, *model);
    EXPECT_EQ(table->verticalScrollBar()->value(), 0);
}

TEST_F(SelectionStateTest, GoesOnWithATagAtTheCursor)
{
    select({2});
    table->setCurrentIndex(cell(2, workflow::RuleColumn::tag));
    table->edit(cell(2, workflow::RuleColumn::tag));
    auto* field = qobject_cast<QLineEdit*>(table->indexWidget(cell(2, workflow::RuleColumn::tag)));
    ASSERT_NE(field, nullptr);
    field->setText(QStringLiteral("half a tag"));
    field->setCursorPosition(4);
    removeMeanwhile(0, 1);
    field = qobject_cast<QLineEdit*>(table->indexWidget(cell(1, workflow::RuleColumn::tag)));
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(), QStringLiteral("half a tag"));
    EXPECT_EQ(field->cursorPosition(), 4);
}

} // namespace quorvane::windows
