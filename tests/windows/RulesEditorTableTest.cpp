#include "tests/windows/EditorTable.h"
#include "windows/RulesTableModel.h"
#include "workflow/PlannedChange.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>

#include <string>
#include <vector>

namespace quorvane::windows {

namespace {

// What the parts of the main window ask of its table.
class RulesEditorTable : public test::EditorTable {
protected:
    RulesEditorTable()
    {
        box.writeSystemFile("quorvane.rc", "allow prefix \"/system/\" \"/usr/bin/zip\" r \"sealed\"\n");
        open("allow prefix \"/a/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n"
             "allow prefix \"/b/\" \"/bin/sh\" r \"two\" \"\" \"0\"\n"
             "deny path \"/c\" \"/bin/vi\" w \"\" \"TEAM\" \"0\"\n");
        rules = store->allRules();
    }

    std::vector<rules::RuleRef> rules;
};

} // namespace

TEST_F(RulesEditorTable, StandsUnderMenusEachOfWhoseItemsHasALetterOfItsOwn)
{
    for (const QMenu* menu : window->menuBar()->findChildren<QMenu*>()) {
        QStringList letters;
        for (const QAction* item : menu->actions()) {
            const QKeySequence key = QKeySequence::mnemonic(item->text());
            if (!key.isEmpty())
                letters.append(key.toString());
        }
        EXPECT_EQ(QSet<QString>(letters.begin(), letters.end()).size(), letters.size())
            << menu->title().toStdString() << ": " << letters.join(QLatin1Char(' ')).toStdString();
    }
}

TEST_F(RulesEditorTable, OpensWindowsThatAreGoneWhenTheyCloseAndKeepTheirSize)
{
    int width = 700; // other than the usual ones, and each its own
    for (const char* item :
        {"asideMenuItem", "mapMenuItem", "whatTouchesMenuItem", "historyMenuItem", "cleanUpMenuItem"}) {
        const auto opened = [&]() -> QPointer<QDialog> {
            action(item)->trigger();
            return window->findChild<QDialog*>(QString(), Qt::FindDirectChildrenOnly);
        };
        QPointer<QDialog> dialog = opened();
        ASSERT_FALSE(dialog.isNull()) << item;
        const QSize size(++width, 555);
        EXPECT_NE(dialog->size(), size) << item;
        dialog->resize(size);
        QApplication::processEvents();
        for (const char* name : {"closeButton", "cancelButton"}) {
            if (auto* button = dialog->findChild<QPushButton*>(QLatin1String(name)))
                button->click();
        }
        if (auto* buttons = dialog->findChild<QDialogButtonBox*>())
            buttons->button(QDialogButtonBox::Cancel)->click();
        ASSERT_TRUE(QTest::qWaitFor([&] { return dialog.isNull(); })) << item;
        dialog = opened();
        EXPECT_EQ(dialog->size(), size) << item;
        delete dialog;
    }
}

TEST_F(RulesEditorTable, HasPartsThatStayInItsWindow)
{
    const auto features = [this](const char* name) { return in<QDockWidget>(name)->features(); };
    EXPECT_EQ(features("problems"), QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    EXPECT_EQ(features("ruleInWords"), QDockWidget::DockWidgetClosable);
    EXPECT_FALSE(in<QDockWidget>("problems")->isVisible()) << "until it is asked for";
    EXPECT_TRUE(in<QDockWidget>("ruleInWords")->isVisible());
    EXPECT_EQ(in<QDockWidget>("problems")->windowTitle(), QStringLiteral("Problems"));
    EXPECT_EQ(window->dockWidgetArea(in<QDockWidget>("problems")), Qt::RightDockWidgetArea);
    QStringList items;
    for (const QAction* item : in<QMenu>("viewMenu")->actions())
        items.append(item->text());
    EXPECT_TRUE(items.join(QLatin1Char('|')).contains(QStringLiteral("Rule in &Words|&Problems|")))
        << items.join(QLatin1Char('|')).toStdString();
}

TEST_F(RulesEditorTable, SelectsRulesWhereverTheyStandAndAnswersThemFromTheTopDown)
{
    QSignalSpy selected(window.get(), &RulesEditorTableController::selectionDidChange);
    window->selectRules({rules[2], rules[0]});
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a/ /c"));
    EXPECT_FALSE(selected.isEmpty());
    EXPECT_EQ(window->selectedRules(), (std::vector{rules[0], rules[2]}));
}

TEST_F(RulesEditorTable, KeepsTheSelectionWhenNoneOfTheRulesIsShown)
{
    window->selectRules({rules[1]});
    window->selectRules({});
    EXPECT_EQ(selectedPaths(), QStringLiteral("/b/"));
}

TEST_F(RulesEditorTable, DropsTheSearchThatHidesARuleWhichIsToBeSeen)
{
    in<QLineEdit>("searchField")->setText(QStringLiteral("/a/"));
    window->revealRule(rules[0]);
    EXPECT_EQ(shownPaths(), QStringLiteral("/a/"));
    window->revealRule(rules[2]);
    EXPECT_EQ(in<QLineEdit>("searchField")->text(), QString());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/c"));
}

TEST_F(RulesEditorTable, KeepsTheSearchForARuleThatIsNoLongerStored)
{
    in<QLineEdit>("searchField")->setText(QStringLiteral("/a/"));
    window->deleteRow(0);
    window->revealRule(rules[0]);
    EXPECT_EQ(in<QLineEdit>("searchField")->text(), QStringLiteral("/a/"));
}

TEST_F(RulesEditorTable, ShowsSystemRulesForOneThatIsToBeSeen)
{
    ASSERT_TRUE(isSystemRule(rules[3]));
    window->revealRule(rules[3]);
    EXPECT_TRUE(window->showsSystemRules());
    EXPECT_EQ(selectedPaths(), QStringLiteral("/system/"));
}

TEST_F(RulesEditorTable, PerformsAChangeOfManyAsOneThatUndoTakesBack)
{
    const std::string before = file();
    QSignalSpy changed(window.get(), &RulesEditorTableController::rulesDidChange);
    const workflow::PlannedChange planned
        = workflow::removalOf(*store, {rules[0], rules[1]}, rules::LineEnds::cut);
    EXPECT_TRUE(window->perform(planned, {.action = "Clean Up 2 Rules"}));
    EXPECT_EQ(shownPaths(), QStringLiteral("/c"));
    EXPECT_FALSE(changed.isEmpty());
    EXPECT_EQ(document->undoName(), "Clean Up 2 Rules");
    window->undo();
    EXPECT_EQ(file(), before);
}

TEST_F(RulesEditorTable, SaysAtTheFootWhyAChangeMayNotBeMade)
{
    const std::string before = file();
    EXPECT_FALSE(window->perform({.refusal = "too long"}, {.action = "Tag"}));
    EXPECT_EQ(notice(), QStringLiteral("Nothing was changed: too long"));
    EXPECT_EQ(file(), before);
    EXPECT_FALSE(document->undoName());
}

TEST_F(RulesEditorTable, SaysAtTheFootWhatAChangeShouldBeKnownBy)
{
    workflow::PlannedChange planned = workflow::removalOf(*store, {rules[0]}, rules::LineEnds::cut);
    planned.remarks = {"one rule went", "None came."};
    EXPECT_TRUE(window->perform(planned, {.action = "Tidy"}));
    EXPECT_EQ(notice(), QStringLiteral("One rule went. None came."));
}

} // namespace quorvane::windows
