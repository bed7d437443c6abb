#include "windows/AsideWindow.h"

#include "desktop/Workspace.h"
#include "tests/rules/StoreSandbox.h"
#include "windows/ElidedLabel.h"
#include "windows/FootNotices.h"
#include "windows/QtText.h"
#include "windows/RulesTableView.h"
#include "windows/Shades.h"
#include "workflow/DifferenceText.h"
#include "workflow/RuleCells.h"

#include <QBrush>
#include <QHeaderView>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::windows {

namespace {

using RuleValues = std::vector<rules::RuleValue>;

class AsideWindowTest : public testing::Test {
protected:
    ~AsideWindowTest() override { delete window; }

    void setAside(const std::string& path, const std::string& program = "any") const
    {
        const auto problem
            = aside.add({valueOf(test::policyRule({.path = path, .processName = program, .operations = 1}))});
        EXPECT_EQ(problem, std::nullopt);
    }
    void open()
    {
        window = new AsideWindow(aside, *inForce, workspace, test::silentLog());
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
        table = window->findChild<RulesTableView*>();
    }
    QPushButton* button(const char* name) const
    {
        return window->findChild<QPushButton*>(QLatin1String(name));
    }
    QString counted() const { return window->findChild<ElidedLabel*>(QStringLiteral("countLabel"))->text(); }
    QString listed() const
    {
        QStringList paths;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            paths.append(
                table->model()->index(row, static_cast<int>(workflow::RuleColumn::path)).data().toString());
        return paths.join(QLatin1Char(' '));
    }
    static std::string lines(const RuleValues& rules)
    {
        std::string text;
        for (const rules::RuleValue& rule : rules)
            text += workflow::ruleText(rule) + '|';
        return text;
    }

    test::StoreSandbox box;
    const workflow::AsideRules aside{box.folder.path("state"), box.locations.userRulesFile()};
    const std::unique_ptr<rules::RuleManager> inForce = box.emptyStore();
    desktop::Workspace workspace;
    QPointer<AsideWindow> window;
    RulesTableView* table = nullptr;
};

} // namespace

TEST_F(AsideWindowTest, ListsAndCountsWhatIsSetAside)
{
    open();
    EXPECT_EQ(table->accessibleDescription(), QStringLiteral("No rule is set aside."));
    EXPECT_EQ(counted(), QStringLiteral("0 rules"));
    setAside("/a");
    setAside("/b");
    window->refresh();
    EXPECT_EQ(listed(), QStringLiteral("/a /b"));
    EXPECT_EQ(counted(), QStringLiteral("2 rules"));
    EXPECT_EQ(table->accessibleDescription(), QString());
}

TEST_F(AsideWindowTest, SaysWhyTheFileCannotBeRead)
{
    std::filesystem::create_directories(aside.file());
    open();
    EXPECT_EQ(table->accessibleDescription(), toQt(aside.read().problem.value_or("")));
    EXPECT_FALSE(table->accessibleDescription().isEmpty());
}

TEST_F(AsideWindowTest, ReadsTheFileAgainWhenItComesToTheFront)
{
    open();
    setAside("/a");
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_EQ(listed(), QString()) << "not while another window is in front";
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    EXPECT_EQ(listed(), QStringLiteral("/a"));
}

TEST_F(AsideWindowTest, KeepsItsSelectionAsLongAsItsRulesStay)
{
    setAside("/a");
    setAside("/b");
    open();
    table->selectRow(1);
    window->refresh();
    EXPECT_EQ(table->selectedRows(), std::vector<std::size_t>{1});
    setAside("/c");
    window->refresh();
    EXPECT_TRUE(table->selectedRows().empty());
}

TEST_F(AsideWindowTest, HandsOverTheSelectedRules)
{
    for (const char* path : {"/a", "/b", "/c"})
        setAside(path);
    open();
    std::string asked;
    QObject::connect(window, &AsideWindow::bringBackRequested,
        [&](const RuleValues& rules) { asked += "bring back " + lines(rules); });
    QObject::connect(window, &AsideWindow::deleteRequested,
        [&](const RuleValues& rules) { asked += "delete " + lines(rules); });
    const RuleValues all = aside.read().rules;
    table->selectRows({1, 2});
    button("bringBackButton")->click();
    EXPECT_EQ(asked, "bring back " + lines({all[1], all[2]}));
    asked.clear();
    table->selectRows({0});
    button("deleteButton")->click();
    EXPECT_EQ(asked, "delete " + lines({all[0]}));
}

TEST_F(AsideWindowTest, OffersNothingWithoutASelection)
{
    setAside("/a");
    open();
    const auto areEnabled = [this](bool wanted) {
        return button("bringBackButton")->isEnabled() == wanted
            && button("deleteButton")->isEnabled() == wanted;
    };
    EXPECT_TRUE(areEnabled(false));
    table->selectRow(0);
    EXPECT_TRUE(areEnabled(true));
    EXPECT_EQ(aside.remove(aside.read().rules), std::nullopt);
    window->refresh();
    EXPECT_TRUE(areEnabled(false)) << "its rule is gone";
}

TEST_F(AsideWindowTest, LooksProgramsUpWhereItIsTold)
{
    setAside("/a", "/opt/thing");
    open();
    const auto color = [this] {
        const QModelIndex cell
            = table->model()->index(0, static_cast<int>(workflow::RuleColumn::application));
        return cell.data(Qt::ForegroundRole).value<QBrush>().color();
    };
    EXPECT_EQ(color(), shades::red.in({}));
    box.folder.write("volume/opt/thing", "");
    std::error_code error;
    window->setPlace(*workflow::RulesPlace::folder(box.folder.path("volume"), error));
    EXPECT_EQ(color(), shades::black.in({}));
}

TEST_F(AsideWindowTest, OffersNoOrderByItsTitles)
{
    open();
    EXPECT_FALSE(table->horizontalHeader()->sectionsClickable());
}

TEST_F(AsideWindowTest, FitsItsColumnsAndTheirPathToTheWindow)
{
    setAside("/" + std::string(300, 'a'));
    open();
    int width = 0;
    for (int column = 0; column < table->model()->columnCount(); ++column)
        width += table->columnWidth(column);
    EXPECT_EQ(width, table->viewport()->width());
    EXPECT_GT(table->columnWidth(static_cast<int>(workflow::RuleColumn::path)),
        table->columnWidth(static_cast<int>(workflow::RuleColumn::application)));
    EXPECT_NE(table->columnWidth(static_cast<int>(workflow::RuleColumn::application)),
        table->columnWidth(static_cast<int>(workflow::RuleColumn::state)))
        << "each as its contents need";
}

TEST_F(AsideWindowTest, ShowsTheLastMessageAtItsFoot)
{
    open();
    window->showMessage(QStringLiteral("One."));
    window->showMessage(QStringLiteral("Two."));
    auto* notices = window->findChild<FootNotices*>();
    EXPECT_EQ(notices->count(), 1U);
    EXPECT_EQ(notices->findChild<ElidedLabel*>(QStringLiteral("noticeText"))->text(), QStringLiteral("Two."));
}

TEST_F(AsideWindowTest, IsGoneWhenItIsClosedAndRemembersItsSize)
{
    open();
    window->resize(700, 333);
    button("closeButton")->click();
    ASSERT_TRUE(QTest::qWaitFor([this] { return window.isNull(); }));
    open();
    EXPECT_EQ(window->size(), QSize(700, 333));
}

} // namespace quorvane::windows
