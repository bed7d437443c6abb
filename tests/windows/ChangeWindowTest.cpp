#include "windows/ChangeWindow.h"
#include "tests/support/TestRules.h"
#include "windows/RulesTableView.h"
#include "workflow/PlannedChange.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorvane::windows {

namespace {

class ChangeWindowTest : public testing::Test {
protected:
    ChangeWindowTest()
        : window(std::make_unique<ChangeWindow>(
            QStringLiteral("Tag"), QStringLiteral("Tag"),
            [this](rules::LineEnds) {
                ++plans;
                return adding(tag);
            },
            adding(tag), rules::LineEnds::cut, nullptr))
    {
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->resize(900, 400);
        static_cast<QWidget*>(window.get())->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        table = window->findChild<RulesTableView*>();
    }

    // Of a rule with that tag; nothing when it is empty.
    workflow::PlannedChange adding(const std::string& tagged)
    {
        if (tagged.empty())
            return {};
        return workflow::addingOf(store,
            {makeRuleValue(rules::PolicyRuleFields{
                .path = "/a", .processName = "/bin/sh", .tag = tagged, .operations = 1})},
            rules::LineEnds::cut);
    }
    bool isPlanned() const { return !window->findChild<QTimer*>(QStringLiteral("planTimer"))->isActive(); }
    QPushButton* button() const { return window->findChild<QPushButton*>(QStringLiteral("changeButton")); }
    // Whether no text of the row is cut.
    bool showsWholeTexts() const
    {
        for (int column = 0; column < table->model()->columnCount(); ++column) {
            if (table->columnWidth(column)
                < table->sizeHintForIndex(table->model()->index(0, column)).width())
                return false;
        }
        return true;
    }

    rules::RuleManager store{platform::Locations("/nonexistent", "nobody"), test::silentLog()};
    std::string tag = "t";
    int plans = 0;
    std::unique_ptr<ChangeWindow> window;
    RulesTableView* table = nullptr;
};

} // namespace

TEST_F(ChangeWindowTest, ShowsWhatHasBeenPlannedWithoutPlanningItAgain)
{
    EXPECT_EQ(plans, 0);
    EXPECT_EQ(table->model()->rowCount(), 1);
    EXPECT_TRUE(button()->isEnabled());
}

TEST_F(ChangeWindowTest, KeepsOtherInputFromItsParentAloneAndIsGoneWhenItIsLeft)
{
    EXPECT_EQ(window->windowModality(), Qt::WindowModal);
    const QPointer<ChangeWindow> left = new ChangeWindow({}, {}, {}, {}, rules::LineEnds::cut, nullptr);
    left->reject();
    EXPECT_TRUE(QTest::qWaitFor([&left] { return left.isNull(); }));
}

TEST_F(ChangeWindowTest, HasTheSizeThatItWasGivenTheLastTime)
{
    window->resize(777, 444);
    window->reject();
    const ChangeWindow next({}, {}, {}, {}, rules::LineEnds::cut, nullptr);
    EXPECT_EQ(next.size(), QSize(777, 444));
}

TEST_F(ChangeWindowTest, SaysInItsTableWhyItIsEmpty)
{
    tag.clear();
    window->replan();
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("Nothing would change."));
}

TEST_F(ChangeWindowTest, PlansOnceAfterTheLastKey)
{
    for (const char* text : {"", "n", "ne", "new"}) {
        tag = text;
        window->planSoon();
    }
    EXPECT_EQ(plans, 0);
    EXPECT_EQ(window->findChild<QTimer*>(QStringLiteral("planTimer"))->interval(), 200) << "milliseconds";
    EXPECT_TRUE(QTest::qWaitFor([this] { return isPlanned(); }));
    EXPECT_EQ(plans, 1);
    EXPECT_EQ(window->planned().change.added.size(), 1U);
}

TEST_F(ChangeWindowTest, CarriesOutWhatTheControlsSayAndNotWhatTheySaidBefore)
{
    QSignalSpy confirmed(window.get(), &ChangeWindow::wasConfirmed);
    tag = "new";
    window->planSoon();
    button()->click();
    ASSERT_EQ(confirmed.size(), 1);
    EXPECT_EQ(plans, 1);
    EXPECT_FALSE(window->isVisible());
    const rules::RuleRef& added = window->planned().change.added.front().rule;
    EXPECT_EQ(visitRule(added, [](const auto& rule) { return std::string(rule.tag().view()); }), "new");
}

TEST_F(ChangeWindowTest, StaysOpenWhereTheControlsAskForNothing)
{
    QSignalSpy confirmed(window.get(), &ChangeWindow::wasConfirmed);
    tag.clear();
    window->planSoon();
    button()->click();
    EXPECT_TRUE(confirmed.isEmpty());
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(button()->isEnabled());
}

TEST_F(ChangeWindowTest, IsWalkedByTabFromItsControlsToItsButtons)
{
    auto* controls = new QWidget;
    auto* text = new QLineEdit(controls);
    auto* choice = new QComboBox(controls);
    choice->addItem(QStringLiteral("one"));
    auto* layout = new QHBoxLayout(controls);
    layout->addWidget(text);
    layout->addWidget(choice);
    controls->setFocusProxy(text);
    window->setControls(controls);
    QApplication::processEvents(); // shows them
    EXPECT_EQ(window->focusWidget(), text);
    for (const QWidget* next : {static_cast<QWidget*>(choice), static_cast<QWidget*>(table),
             window->findChild<QWidget*>(QStringLiteral("cancelButton")), static_cast<QWidget*>(button()),
             static_cast<QWidget*>(text)}) {
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(window->focusWidget(), next) << next->objectName().toStdString();
    }
}

TEST_F(ChangeWindowTest, MakesColumnsAsWideAsTheLatestTextsNeed)
{
    ASSERT_TRUE(showsWholeTexts());
    tag = "a tag of several words";
    window->replan();
    EXPECT_TRUE(showsWholeTexts());
    const int column = table->horizontalHeader()->logicalIndex(0);
    table->setColumnWidth(column, table->columnWidth(column) + 5);
    const int chosen = table->columnWidth(column);
    tag = "another";
    window->replan();
    EXPECT_EQ(table->columnWidth(column), chosen) << "a person's choice";
}

} // namespace quorvane::windows
