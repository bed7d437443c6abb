#include "windows/TouchingWindow.h"

#include "tests/rules/RandomRules.h"
#include "tests/windows/EditorTable.h"
#include "windows/OperationBoxesRow.h"
#include "windows/PathField.h"
#include "windows/RulesTableModel.h"
#include "windows/TouchingModel.h"
#include "workflow/RuleEdits.h"

#include <QCheckBox>
#include <QClipboard>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QUrl>

namespace quorvane::windows {

namespace {

class Touching : public test::EditorTable {
protected:
    Touching()
    {
        box.writeSystemFile("quorvane.rc", "allow prefix \"/\" \"/usr/bin/zip\" r\n");
        open("watch suffix \".conf\" \"/bin/vi\" r \"\"\n"
             "allow prefix \"/etc/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n"
             "deny path \"/etc/hosts\" \"/bin/sh\" w \"\" \"\" \"0\"\n"
             "allow prefix \"/home/\" \"/bin/vi\" r \"\" \"\" \"0\"\n"
             "deny prefix \"any\" \"any\" x \"\" \"\" \"0\"\n");
        action("whatTouchesMenuItem")->trigger();
        touching = window->findChild<TouchingWindow*>();
        list = touching->findChild<RulesTableView*>();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(touching));
    }

    template <class Child> Child* control(const char* name) const
    {
        auto* child = touching->findChild<Child*>(QString::fromLatin1(name));
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    // Does something, and waits for the answer to it.
    template <class Act> void afterAnswer(Act act)
    {
        QSignalSpy answered(touching, &TouchingWindow::wasAnswered);
        act();
        EXPECT_TRUE(!answered.isEmpty() || answered.wait());
    }
    void ask(const std::string& path)
    {
        afterAnswer([&] { control<PathField>("pathField")->setPath(path); });
    }
    std::string found() const { return pathsIn(*list); }
    std::string why(int row) const
    {
        return list->model()->index(row, TouchingModel::whyColumn).data().toString().toStdString();
    }

    TouchingWindow* touching = nullptr;
    RulesTableView* list = nullptr;
};

} // namespace

TEST_F(Touching, OpensWithTheKeyboardInThePath)
{
    EXPECT_EQ(touching->focusWidget(), &control<PathField>("pathField")->field());
}

TEST_F(Touching, ListsNothingBeforeAPathIsNamed)
{
    EXPECT_EQ(list->model()->rowCount(), 0);
    ask("/etc/hosts");
    ask("");
    EXPECT_EQ(found(), "");
    EXPECT_EQ(control<QLabel>("countLabel")->text(), QString());
}

TEST_F(Touching, ListsTheRulesWhoseTextCoversThePathByProgramAndSaysWhy)
{
    ask("/etc/hosts");
    EXPECT_EQ(found(), "any|/etc/|/etc/hosts|/|");
    EXPECT_EQ(why(0), "every path");
    EXPECT_EQ(why(1), "begins with it");
    EXPECT_EQ(why(2), "the path itself");
    EXPECT_TRUE(control<QLabel>("countLabel")->text().startsWith(QStringLiteral("4 rules.")));
}

TEST_F(Touching, IsNarrowedByProgramAndOperations)
{
    ask("/etc/x.conf");
    EXPECT_EQ(found(), ".conf|any|/etc/|/|");
    afterAnswer([&] { control<PathField>("programField")->setPath("/bin/sh"); });
    EXPECT_EQ(found(), "any|/etc/|");
    EXPECT_EQ(why(0), "every path; any program");
    EXPECT_EQ(why(1), "begins with it; this program");
    afterAnswer([&] { touching->findChild<OperationBoxesRow*>()->findChild<QCheckBox*>()->click(); });
    EXPECT_EQ(found(), "/etc/|");
}

TEST_F(Touching, KeepsWhatIsPastedIntoItsFieldsOnOneLine)
{
    QApplication::clipboard()->setText(QStringLiteral("/etc/\nhosts\n"));
    for (const char* name : {"pathField", "programField"}) {
        auto* pathField = control<PathField>(name);
        pathField->field().paste();
        EXPECT_EQ(pathField->path(), "/etc/hosts") << name;
    }
}

TEST_F(Touching, SaysInWordsWhatItLists)
{
    const auto counted = [this] { return control<QLabel>("countLabel")->text(); };
    EXPECT_EQ(
        list->accessibleDescription(), QStringLiteral("The rules that are about a path: name one above."));
    control<PathField>("pathField")->setPath("/etc/hosts");
    EXPECT_EQ(counted(), QStringLiteral("Searching\u2026"));
    ask("/etc/hosts");
    EXPECT_EQ(list->accessibleDescription(), QString());
    EXPECT_EQ(counted(), QStringLiteral("4 rules. Which of them wins is decided where rules are enforced."));
    afterAnswer([&] { control<QCheckBox>("systemRulesCheckBox")->click(); });
    ask("/nowhere");
    EXPECT_EQ(counted(), QStringLiteral("1 rule."));
    afterAnswer([&] { touching->findChild<OperationBoxesRow*>()->findChild<QCheckBox*>()->click(); });
    EXPECT_EQ(list->accessibleDescription(), QStringLiteral("No rule is about this."));
    EXPECT_EQ(counted(), QStringLiteral("0 rules."));
}

TEST_F(Touching, SaysWhatItsFieldsTake)
{
    const auto hint
        = [this](const char* name) { return control<PathField>(name)->field().placeholderText(); };
    EXPECT_EQ(hint("pathField"), QStringLiteral("Type or choose a path, or drop a file on the window"));
    EXPECT_EQ(hint("programField"), QStringLiteral("Any; or the path of a program"));
}

TEST_F(Touching, IsWalkedByTabFromItsQuestionToItsButtons)
{
    ask("/etc/hosts");
    list->selectRow(0);
    control<QCheckBox>("systemRulesCheckBox")->setFocus();
    for (const QWidget* next :
        {static_cast<QWidget*>(list), control<QWidget>("showButton"), control<QWidget>("closeButton")}) {
        QTest::keyClick(touching->focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(touching->focusWidget(), next) << next->objectName().toStdString();
    }
}

TEST_F(Touching, LeavesSystemRulesOutOnRequest)
{
    ask("/usr/x");
    EXPECT_EQ(found(), "any|/|");
    afterAnswer([&] { control<QCheckBox>("systemRulesCheckBox")->click(); });
    EXPECT_EQ(found(), "any|");
}

TEST_F(Touching, FollowsTheRules)
{
    ask("/home/x");
    afterAnswer([&] {
        document->perform(workflow::deletionOf(*store, {store->userRules().back()}), {"Delete Rule"});
        window->reloadData();
    });
    EXPECT_EQ(found(), "any|/|");
}

TEST_F(Touching, ShowsTheChosenRuleInTheMainTable)
{
    in<QLineEdit>("searchField")->setText(QStringLiteral("nothing"));
    ask("/etc/hosts");
    EXPECT_FALSE(control<QPushButton>("showButton")->isEnabled());
    list->selectRow(2);
    EXPECT_TRUE(control<QPushButton>("showButton")->isEnabled());
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/etc/hosts"));
    EXPECT_TRUE(QTest::qWaitFor([this] { return QApplication::activeWindow() == window.get(); }));
    list->selectRow(1);
    control<QPushButton>("showButton")->click();
    EXPECT_EQ(selectedPaths(), QStringLiteral("/etc/"));
    ask("/etc/");
    EXPECT_FALSE(control<QPushButton>("showButton")->isEnabled()) << "another answer, nothing selected";
}

TEST_F(Touching, TakesAFileThatIsDroppedOnTheWindow)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QStringLiteral("/etc/hosts"))});
    afterAnswer([&] {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(touching, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(touching, &dropped);
    });
    EXPECT_EQ(control<PathField>("pathField")->path(), "/etc/hosts");
    EXPECT_EQ(list->model()->rowCount(), 4);
}

TEST_F(Touching, CountsMoreRulesThanItLists)
{
    rules::ChangeSet additions;
    for (int count = 0; count < 20'010; ++count) {
        const rules::RuleRef rule = test::policyRule(
            {.path = "/many/", .processName = "/bin/" + std::to_string(count), .operations = 1});
        additions.added.push_back({rule, valueOf(rule)});
    }
    store->apply(additions);
    afterAnswer([&] { window->reloadData(); });
    ask("/many/x");
    EXPECT_EQ(list->model()->rowCount(), 20'000);
    EXPECT_TRUE(control<QLabel>("countLabel")
                    ->text()
                    .startsWith(QStringLiteral("20,012 rules, of which the first 20,000 are shown.")))
        << control<QLabel>("countLabel")->text().toStdString();
}

TEST_F(Touching, IsOpenOnceOnly)
{
    action("whatTouchesMenuItem")->trigger();
    EXPECT_EQ(window->findChildren<TouchingWindow*>().size(), 1);
}

TEST(TouchSearchTest, FindsWhatAPlainWalkFinds)
{
    test::RandomRules random(7);
    const test::StoreSandbox box;
    const auto store = box.emptyStore();
    rules::ChangeSet additions;
    for (int count = 0; count < 2000; ++count) {
        const rules::RuleRef rule = test::policyRule(random.policy());
        additions.added.push_back({rule, valueOf(rule)});
    }
    store->apply(additions);
    TouchSearch search(*store);
    std::vector<rules::RuleRef> found;
    QObject::connect(
        &search, &TouchSearch::found, [&](const std::vector<rules::RuleRef>& rules) { found = rules; });
    QSignalSpy answered(&search, &TouchSearch::found);
    for (const rules::RuleRef& asked : store->allRules()) {
        if (answered.size() == 50)
            break;
        const workflow::TouchQuestion question{.path
            = visitRule(asked, [](const auto& rule) { return std::string(rule.fields().path.view()); })};
        search.search(question, true);
        ASSERT_TRUE(answered.wait());
        std::vector<rules::RuleRef> expected;
        for (const rules::RuleRef& rule : store->allRules()) {
            if (touches(rule, question))
                expected.push_back(rule);
        }
        EXPECT_EQ(found, expected) << question.path;
    }
}

TEST(TouchSearchTest, IsOvertakenByTheNextSearch)
{
    const test::StoreSandbox box;
    const auto store = box.storeOf("allow prefix \"/a\" any r\nallow prefix \"/b\" any r\n");
    TouchSearch search(*store);
    QSignalSpy answered(&search, &TouchSearch::found);
    search.search({.path = "/a"}, true);
    search.search({.path = "/b"}, true);
    ASSERT_TRUE(answered.wait());
    ASSERT_EQ(answered.size(), 1);
    EXPECT_EQ(answered[0][0].value<std::vector<rules::RuleRef>>(), std::vector{store->allRules()[1]});
}

TEST_F(Touching, FitsItsColumnsToEachAnswerHoweverTheWindowIsResized)
{
    touching->resize(1100, 500);
    ask("/etc/hosts");
    const int narrow = list->columnWidth(static_cast<int>(workflow::RuleColumn::tag));
    touching->resize(1300, 500);
    QApplication::processEvents();
    document->perform(workflow::additionOf(test::policyRule({.path = "/etc/hosts",
                          .processName = "/bin/sh",
                          .tag = "a tag of several words",
                          .operations = 1})),
        {"Add"});
    afterAnswer([this] { window->reloadData(); });
    EXPECT_GT(list->columnWidth(static_cast<int>(workflow::RuleColumn::tag)), narrow);
}

} // namespace quorvane::windows
