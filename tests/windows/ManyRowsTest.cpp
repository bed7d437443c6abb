#include "tests/support/TestDocument.h"
#include "tests/support/TestRules.h"
#include "tests/windows/TableWindow.h"
#include "windows/RulesEditorTableController.h"
#include "workflow/RuleCells.h"

#include <QLineEdit>

// The main window with so many rules that sorts and searches are computed on another thread.

namespace quorvane::windows {

namespace {

class ManyRows : public test::TableWindow<RulesEditorTableController, workflow::RuleColumn> {
protected:
    static constexpr int rules = 21'000;

    ManyRows()
    {
        for (int number = 0; number < rules; ++number)
            store.addPolicyRule(test::policyRule({.path = pathOf(number), .processName = "/bin/sh"}));
        window
            = std::make_unique<RulesEditorTableController>(document, application, run, workspace, log.log());
        show();
        search = in<QLineEdit>("searchField");
    }
    ~ManyRows() override { window.reset(); } // before the document

    // In stored order no path stands where it does when sorted.
    static std::string pathOf(int number) { return "/" + std::to_string(10 * rules - 1 - number); }
    QString pathAt(int row) const { return text(row, workflow::RuleColumn::path); }
    rules::RuleRef ruleAt(int row) const
    {
        return store.storedRows()->at(static_cast<std::size_t>(row), true);
    }

    rules::RuleManager store{platform::Locations("/root", "ann"), test::silentLog()};
    test::TestDocument document{store, run};
    QLineEdit* search = nullptr;
};

} // namespace

TEST_F(ManyRows, KeepTheirOrderUntilTheNewOneIsComputed)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));

    EXPECT_EQ(pathAt(0), QStringLiteral("/209999"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return pathAt(0) == QStringLiteral("/189000"); }));
    EXPECT_EQ(pathAt(rules - 1), QStringLiteral("/209999"));
}

TEST_F(ManyRows, ShowTheLastOfTheTextsThatAreTypedMeanwhile)
{
    for (const char* typed : {"2", "20", "209", "2099", "20999", "209998"})
        search->setText(QString::fromLatin1(typed));

    EXPECT_EQ(table->model()->rowCount(), rules);
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() != rules; }));
    EXPECT_EQ(shownPaths(), QStringLiteral("/209998"));
    EXPECT_EQ(counts(), QStringLiteral("1 of 21,000 rules shown"));
}

TEST_F(ManyRows, OfASortThatTheSearchOvertookAreSortedAll)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    search->setText(QStringLiteral("19999"));

    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() != rules; }));
    EXPECT_EQ(shownPaths(),
        QStringLiteral("/199990 /199991 /199992 /199993 /199994 /199995 /199996 /199997 "
                       "/199998 /199999"));
}

TEST_F(ManyRows, KeepSelectionAndTheRuleOfACommandGivenMeanwhile)
{
    select({7});
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    window->deleteRow(3);

    EXPECT_EQ(store.storedRules(), rules - 1U);
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == rules - 1; }));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/209992"));
    EXPECT_EQ(pathAt(rules - 2), QStringLiteral("/209999"));
    EXPECT_EQ(pathAt(rules - 5), QStringLiteral("/209995")); // /209996 is gone
}

TEST_F(ManyRows, RevealARuleThatTheSearchHides)
{
    search->setText(QStringLiteral("209998"));
    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == 1; }));

    window->revealRule(ruleAt(5));

    ASSERT_TRUE(QTest::qWaitFor([this] { return table->model()->rowCount() == rules; }));
    EXPECT_EQ(selectedPaths(), QStringLiteral("/209994"));
}

TEST_F(ManyRows, AreNoLongerComputedWhenTheWindowCloses)
{
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    window.reset();
    QApplication::processEvents();
    EXPECT_EQ(store.ruleAtIndex(0, false), ruleAt(rules - 1));
}

} // namespace quorvane::windows
