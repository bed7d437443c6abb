#include "windows/AsideController.h"

#include "tests/windows/EditorTable.h"
#include "windows/AsideWindow.h"
#include "windows/RulesTableModel.h"
#include "workflow/RuleEdits.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <filesystem>

namespace quorvane::windows {

namespace {

class Aside : public test::EditorTable {
protected:
    enum Row { watch, first, second };

    Aside()
    {
        box.writeSystemFile("quorvane.rc", "allow prefix \"/system/\" \"/usr/bin/zip\" r \"sealed\"\n");
        open(test::watchLine + test::firstLine + test::secondLine, box.folder.path("state"));
    }

    std::string asideFile() const
    {
        const workflow::AsideRules aside(box.folder.path("state"), box.locations.userRulesFile());
        return aside.file();
    }
    std::string asideText() const { return test::TemporaryFolder::contents(asideFile()); }
    void setAside(std::initializer_list<int> rows) const
    {
        select(rows);
        action("setAsideMenuItem")->trigger();
    }
    void openAside()
    {
        action("asideMenuItem")->trigger();
        asideWindow = window->findChild<AsideWindow*>();
        asideTable = asideWindow->findChild<RulesTableView*>();
    }
    std::string listed() const { return pathsIn(*asideTable); }
    QPushButton* asideButton(const char* name) const
    {
        return asideWindow->findChild<QPushButton*>(QString::fromLatin1(name));
    }
    void bringBack(int row) const
    {
        asideTable->selectRow(row);
        asideButton("bringBackButton")->click();
    }

    AsideWindow* asideWindow = nullptr;
    RulesTableView* asideTable = nullptr;
};

} // namespace

TEST_F(Aside, TakesTheSelectedRulesOutOfForceInOneAction)
{
    const std::string before = file();
    setAside({watch, second});
    EXPECT_EQ(file(), test::firstLine);
    EXPECT_EQ(asideText(), test::watchLine + test::secondLine);
    EXPECT_EQ(document->undoName(), "Set Aside 2 Rules");
    action("undoMenuItem")->trigger();
    EXPECT_EQ(file(), before);
}

TEST_F(Aside, OpensWithTheKeyboardInItsTable)
{
    setAside({first});
    openAside();
    EXPECT_EQ(asideWindow->focusWidget(), asideTable);
}

TEST_F(Aside, BringsRulesBackWithTagAndDate)
{
    const std::string before = file();
    setAside({first});
    openAside();
    EXPECT_EQ(listed(), "/a/|");
    EXPECT_FALSE(asideButton("bringBackButton")->isEnabled());
    bringBack(0);
    EXPECT_NE(file().find(test::firstLine), std::string::npos);
    EXPECT_EQ(file().size(), before.size());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a/"));
    EXPECT_EQ(listed(), "");
}

TEST_F(Aside, SelectsAllRulesThatAreBack)
{
    setAside({watch, first, second});
    openAside();
    asideTable->selectAll();
    asideButton("bringBackButton")->click();
    EXPECT_EQ(selectedRows(), (QList<int>{0, 1, 2}));
}

TEST_F(Aside, ShowsARuleThatIsBackAlthoughTheSearchHidesIt)
{
    setAside({first});
    openAside();
    in<QLineEdit>("searchField")->setText(QStringLiteral("nothing like this"));
    bringBack(0);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a/"));
}

TEST_F(Aside, ListsARuleNoLongerOnceItIsInForceAgain)
{
    setAside({first});
    openAside();
    action("undoMenuItem")->trigger();
    EXPECT_EQ(listed(), "");
    action("redoMenuItem")->trigger();
    EXPECT_EQ(listed(), "/a/|");
}

TEST_F(Aside, ListsARuleAgainWhenItsReturnIsTakenBack)
{
    setAside({first});
    openAside();
    bringBack(0);
    action("undoMenuItem")->trigger();
    EXPECT_EQ(file().find(test::firstLine), std::string::npos);
    EXPECT_EQ(listed(), "/a/|");
}

TEST_F(Aside, KeepsRulesInForceWhenTheyCannotBeWrittenAside)
{
    const std::string before = file();
    std::filesystem::create_directories(asideFile() + "/x");
    setAside({first});
    EXPECT_EQ(file(), before);
    EXPECT_EQ(store->userRules().size(), 3U);
    EXPECT_TRUE(notice().startsWith(QStringLiteral("Nothing was set aside: "))) << notice().toStdString();
}

TEST_F(Aside, HasTheRulesWhenTheRulesFileCannotBeWritten)
{
    std::filesystem::remove(box.locations.userRulesFile());
    std::filesystem::create_directory(box.locations.userRulesFile());
    setAside({first});
    EXPECT_EQ(asideText(), test::firstLine);
    EXPECT_NE(document->failure(), std::nullopt);
}

TEST_F(Aside, StillHasTheRulesWhenTheirReturnCannotBeWritten)
{
    setAside({first});
    openAside();
    std::filesystem::remove(box.locations.userRulesFile());
    std::filesystem::create_directory(box.locations.userRulesFile());
    bringBack(0);
    EXPECT_NE(document->failure(), std::nullopt);
    EXPECT_EQ(asideText(), test::firstLine);
}

TEST_F(Aside, LeavesSystemRulesWhereTheyAre)
{
    action("hideSystemToolbarItem")->trigger();
    window->selectRules({store->allRules().back()});
    action("setAsideMenuItem")->trigger();
    EXPECT_FALSE(std::filesystem::exists(asideFile()));
    EXPECT_EQ(store->storedRules(), 4U);
}

TEST_F(Aside, DeletesRulesForGoodOnlyWhenThatIsConfirmed)
{
    setAside({first, second});
    openAside();
    for (const auto& [button, left] : {std::pair{"Cancel", "/a/|/b/|"}, std::pair{"&Delete", "/b/|"}}) {
        asideTable->selectRow(0);
        QTimer::singleShot(0, asideWindow, [name = button] {
            auto* question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(question, nullptr);
            EXPECT_EQ(question->defaultButton(), question->button(QMessageBox::Cancel));
            EXPECT_EQ(question->text(),
                QStringLiteral("Delete 1 rule for good? Nothing brings back what is deleted here."));
            for (QAbstractButton* each : question->buttons()) {
                if (each->text() == QString::fromLatin1(name))
                    return each->click();
            }
            ADD_FAILURE() << name;
        });
        asideButton("deleteButton")->click();
        EXPECT_EQ(listed(), left);
    }
    EXPECT_EQ(asideText(), test::secondLine);
}

TEST_F(Aside, SaysWhatWasDoneAndOffersItsWindowAtTheFoot)
{
    setAside({first});
    EXPECT_EQ(notice(), QStringLiteral("1 rule is set aside."));
    setAside({watch, first});
    EXPECT_EQ(notice(), QStringLiteral("2 rules are set aside."));
    EXPECT_EQ(in<FootNotices>("notices")->count(), 1U);
    auto* show = in<FootNotices>("notices")->findChild<QPushButton*>();
    ASSERT_NE(show, nullptr);
    show->click();
    EXPECT_NE(window->findChild<AsideWindow*>(), nullptr);
}

TEST_F(Aside, SaysInItsWindowWhyRulesAreNotDeleted)
{
    setAside({first});
    openAside();
    std::filesystem::remove(asideFile());
    std::filesystem::create_directories(asideFile() + "/x");
    asideTable->selectRow(0);
    QTimer::singleShot(0, asideWindow, [] {
        for (QAbstractButton* each :
            qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->buttons()) {
            if (each->text() == QStringLiteral("&Delete"))
                return each->click();
        }
    });
    asideButton("deleteButton")->click();
    EXPECT_EQ(asideWindow->findChild<FootNotices*>()->count(), 1U);
}

TEST_F(Aside, SaysInItsWindowWhyRulesAreNotBroughtBack)
{
    test::EditorTable::open(test::firstLine, box.folder.path("state"));
    setAside({0});
    box.writeUserRules("allow prefix \"/M\u00fcsik/\" \"any\" r \"\" \"\" \"0\"\n");
    document->takeForeignChanges();
    openAside();
    bringBack(0);
    EXPECT_EQ(asideWindow->findChild<FootNotices*>()->count(), 1U);
    EXPECT_EQ(listed(), "/a/|");
}

TEST_F(Aside, ShowsTagsThatCannotBeEdited)
{
    setAside({first});
    openAside();
    asideTable->selectRow(0);
    QTest::keyClick(asideTable, Qt::Key_F2);
    EXPECT_EQ(asideTable->findChild<QLineEdit*>(), nullptr);
}

TEST_F(Aside, OffersWholeLinesWhereTakingRulesOutWouldCutAnother)
{
    workflow::ProgramSettings whole;
    whole.wholeLines = true;
    document->setSettings(whole);
    document->perform(workflow::additionOf(
                          test::policyRule({.path = "/M\u00fcsik/", .processName = "any", .operations = 1})),
        {"Add"});
    document->setSettings({});
    window->reloadData();
    const std::string before = file();
    setAside({watch});
    EXPECT_EQ(file(), before);
    EXPECT_FALSE(std::filesystem::exists(asideFile()));
    auto* wholeLines = in<FootNotices>("notices")->findChild<QPushButton*>();
    ASSERT_NE(wholeLines, nullptr);
    EXPECT_EQ(wholeLines->text(), QStringLiteral("Write Whole Lines"));
    wholeLines->click();
    setAside({watch});
    EXPECT_EQ(asideText(), test::watchLine);
}

} // namespace quorvane::windows
