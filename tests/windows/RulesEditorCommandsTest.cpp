#include "tests/rules/StoreSandbox.h"
#include "tests/windows/EditorTable.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/RulesTableModel.h"

#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>

namespace quorvane::windows {

namespace {

const std::string headLine = "allow prefix \"/a/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n";
const std::string nextLine = "allow prefix \"/b/\" \"/bin/sh\" r \"two\" \"\" \"0\"\n";
class Commands : public test::EditorTable {
protected:
    enum Row { watch, head, next, vi }; // of the user's rules

    Commands()
    {
        box.writeSystemFile("quorvane.rc", "allow prefix \"/system/\" \"/usr/bin/zip\" r \"sealed\"\n");
        open(test::watchLine + headLine + nextLine + test::viLine);
        table->setFocus();
    }

    QMenu* contextMenu() const { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    void showSystemRules() const { action("hideSystemToolbarItem")->trigger(); }
    // Opens the context menu with the mouse.
    void clickRight(int row) const
    {
        const QPoint place = table->viewport()->mapTo(
            window.get(), table->visualRect(cell(row, workflow::RuleColumn::path)).center());
        QTest::mouseClick(window->windowHandle(), Qt::RightButton, {}, place);
        EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activePopupWidget() != nullptr; }));
    }
    void choose(const char* title) const
    {
        QMenu* menu = contextMenu();
        for (QAction* action : menu->actions()) {
            if (action->text() == QString::fromLatin1(title))
                action->trigger();
        }
        menu->close();
    }
    template <class Editor> Editor* editor() const { return window->findChild<Editor*>(); }
    // Edits the tag of a row as a person does, and leaves the cell with `lastKey`.
    void typeTag(int row, const char* tag, Qt::Key lastKey = Qt::Key_Return) const
    {
        table->selectRow(row);
        QTest::keyClick(table, Qt::Key_F2);
        auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        ASSERT_NE(field, nullptr);
        field->selectAll();
        QTest::keyClicks(field, QString::fromLatin1(tag));
        QTest::keyClick(field, lastKey);
        QApplication::processEvents();
    }
};

} // namespace

TEST_F(Commands, NewRuleOpensAnEditorOfItsKindOnTheTemplate)
{
    for (const char* item : {"newRuleToolbarItem", "newPolicyRuleMenuItem", "newWatchRuleMenuItem"}) {
        SCOPED_TRACE(item);
        action(item)->trigger();
        auto* opened = editor<RuleEditorWindow>();
        ASSERT_NE(opened, nullptr);
        EXPECT_EQ(policyRuleIn(opened->rule()) == nullptr, item == std::string("newWatchRuleMenuItem"));
        EXPECT_EQ(opened->draft().processName, "any");
        EXPECT_EQ(opened->draft().operations, 7U);
        EXPECT_EQ(opened->delegate(), window.get());
        delete opened;
    }
}

TEST_F(Commands, TheMenuItemsForNewRulesAreLogged)
{
    action("newPolicyRuleMenuItem")->trigger();
    EXPECT_EQ(log.lines().at(log.lines().size() - 2), "-[RulesEditorTableController newPolicyRule:]");
    action("newWatchRuleMenuItem")->trigger();
    const auto lines = log.lines();
    EXPECT_NE(
        std::find(lines.begin(), lines.end(), "-[RulesEditorTableController newWatchRule:]"), lines.end());
    EXPECT_NE(editor<EditWatchWindowController>(), nullptr);
}

TEST_F(Commands, ASavedNewRuleIsSelectedInTheTable)
{
    for (const char* item : {"newPolicyRuleMenuItem", "newWatchRuleMenuItem"}) {
        SCOPED_TRACE(item);
        run.internalWrite = false;
        action(item)->trigger();
        auto* opened = editor<RuleEditorWindow>();
        ASSERT_NE(opened, nullptr);
        const rules::RuleRef rule = opened->rule();
        auto* path = opened->findChild<QLineEdit*>(QStringLiteral("pathTextField"));
        QTest::keyClicks(path, QStringLiteral("/new/"));
        opened->saveClicked();
        delete opened;
        ASSERT_EQ(selectedRows().size(), 1);
        EXPECT_EQ(store->ruleAtIndex(static_cast<std::size_t>(selectedRows().front()), false), rule);
        EXPECT_EQ(selectedPaths(), QStringLiteral("/new/"));
        EXPECT_TRUE(run.internalWrite);
    }
}

TEST_F(Commands, ASavedNewRuleThatIsNotShownIsNotSelectedLaterInTheMidstOfSomethingElse)
{
    const auto saveNew = [this] {
        action("newPolicyRuleMenuItem")->trigger();
        auto* opened = editor<RuleEditorWindow>();
        opened->findChild<QLineEdit*>(QStringLiteral("pathTextField"))->setText(QStringLiteral("/new/"));
        opened->saveClicked();
        delete opened;
    };
    auto* search = in<QLineEdit>("searchField");
    search->setText(QStringLiteral("vi"));
    saveNew();
    search->clear();
    EXPECT_TRUE(shownPaths().contains(QStringLiteral("/new/")));
    EXPECT_EQ(selectedPaths(), QString());

    action("narrowMenuItem")->trigger();
    auto* ruleClass = in<QComboBox>("classChoice");
    ruleClass->setCurrentIndex(ruleClass->findText(QStringLiteral("Watch")));
    ASSERT_TRUE(QTest::qWaitFor([this] { return !shownPaths().contains(QStringLiteral("/new/")); }));
    saveNew();
    ruleClass->setCurrentIndex(0);
    ASSERT_TRUE(QTest::qWaitFor([this] { return shownPaths().contains(QStringLiteral("/new/")); }));
    EXPECT_EQ(selectedPaths(), QString());
}

TEST_F(Commands, RightClickSelectsTheRowAloneBeforeTheMenuOpens)
{
    select({watch, head});
    clickRight(vi);
    ASSERT_NE(contextMenu(), nullptr);
    EXPECT_EQ(contextMenu()->title(), QStringLiteral("Rule"));
    EXPECT_EQ(selectedRows(), QList<int>{vi});
    QStringList titles;
    for (const QAction* action : contextMenu()->actions())
        titles.append(action->text());
    EXPECT_EQ(titles.join(QLatin1Char('|')), QStringLiteral("New Rule...|Edit|Delete"));
    contextMenu()->close();
}

TEST_F(Commands, RightClickOnOneOfSeveralSelectedRowsSelectsItAlone)
{
    select({watch, head, vi});
    clickRight(head);
    EXPECT_EQ(selectedRows(), QList<int>{head});
    contextMenu()->close();
}

TEST_F(Commands, TheMenuKeyOpensTheMenuOfTheCurrentRow)
{
    table->selectRow(head);
    QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), QPoint());
    QApplication::sendEvent(table->viewport(), &event);
    ASSERT_NE(contextMenu(), nullptr);
    EXPECT_EQ(selectedRows(), QList<int>{head});
    contextMenu()->close();
}

TEST_F(Commands, WhereThereIsNoRowNoMenuOpens)
{
    QContextMenuEvent event(QContextMenuEvent::Mouse, table->viewport()->rect().bottomLeft() - QPoint(0, 5),
        table->viewport()->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(table->viewport(), &event);
    EXPECT_EQ(contextMenu(), nullptr);
}

TEST_F(Commands, TheContextMenuMakesANewRuleForTheClickedProgram)
{
    clickRight(vi);
    choose("New Rule...");
    ASSERT_NE(editor<EditPolicyWindowController>(), nullptr);
    const rules::PolicyRulePtr rule = editor<EditPolicyWindowController>()->policyRule();
    EXPECT_EQ(rule->processName().written(), "/bin/vi");
    EXPECT_EQ(rule->constraint().written(), "TEAM");
    EXPECT_EQ(rule->policyClass(), 0);
}

TEST_F(Commands, TheContextMenuEditsEitherKind)
{
    clickRight(vi);
    choose("Edit");
    ASSERT_NE(editor<EditPolicyWindowController>(), nullptr);
    EXPECT_EQ(editor<EditPolicyWindowController>()->policyRule()->path().written(), "/c");
    clickRight(watch);
    choose("Edit");
    ASSERT_NE(editor<EditWatchWindowController>(), nullptr);
    EXPECT_EQ(editor<EditWatchWindowController>()->watchRule()->path().written(), "/w/");
}

TEST_F(Commands, TheContextMenuDeletesTheClickedRule)
{
    clickRight(next);
    choose("Delete");
    EXPECT_EQ(file(), test::watchLine + headLine + test::viLine);
    EXPECT_EQ(table->model()->rowCount(), 3);
    EXPECT_TRUE(application.notices.empty());
}

TEST_F(Commands, TheContextMenuOffersNeitherEditNorDeleteForASystemRule)
{
    showSystemRules();
    clickRight(4);
    ASSERT_EQ(text(4, workflow::RuleColumn::path), QStringLiteral("/system/"));
    const auto actions = contextMenu()->actions();
    EXPECT_TRUE(actions.at(0)->isEnabled());
    EXPECT_FALSE(actions.at(1)->isEnabled());
    EXPECT_FALSE(actions.at(2)->isEnabled());
    contextMenu()->close();
    const auto lines = log.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "-[RulesEditorTableController validateMenuItem:]"), 2);
}

TEST_F(Commands, AReloadClosesTheContextMenuWhoseRowMayBeAnotherRules)
{
    clickRight(next);
    window->reloadData();
    EXPECT_EQ(contextMenu(), nullptr);
}

TEST_F(Commands, DeletingTheHeadOfAGroupShowsTheProgramInTheNextRow)
{
    // The head of /bin/sh stands below a rule of another program.
    box.writeUserRules("allow prefix \"/0/\" \"/bin/aa\" r\n" + headLine + nextLine);
    store->reloadCurrentUserConfiguration();
    window->reloadData();
    QApplication::processEvents();
    ASSERT_EQ(text(1, workflow::RuleColumn::application), QStringLiteral("sh"));
    ASSERT_EQ(text(2, workflow::RuleColumn::application), QString());
    window->deleteRow(1);
    EXPECT_EQ(text(1, workflow::RuleColumn::application), QStringLiteral("sh"));
    EXPECT_FALSE(cell(1, workflow::RuleColumn::application).data(Qt::DecorationRole).isNull());
}

TEST_F(Commands, DeletingTheSelectedHeadOfAGroupShowsTheProgramInTheNextRow)
{
    select({head});
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(text(head, workflow::RuleColumn::path), QStringLiteral("/b/"));
    EXPECT_EQ(text(head, workflow::RuleColumn::application), QStringLiteral("sh"));
}

TEST_F(Commands, TheNextRowShowsTheProgramByWhateverWayTheHeadOfItsGroupWent)
{
    const auto showsProgram = [this](int row) {
        QApplication::processEvents(); // painted
        return text(row, workflow::RuleColumn::application) == QStringLiteral("sh")
            && !cell(row, workflow::RuleColumn::application).data(Qt::DecorationRole).isNull();
    };
    ASSERT_EQ(text(next, workflow::RuleColumn::application), QString());
    window->deleteRow(head); // below a watch rule, where the command does not take it for a head
    EXPECT_TRUE(showsProgram(1));

    // Of two programs with one name the second has a group of its own.
    box.writeUserRules(
        headLine + "allow prefix \"/a/\" \"/usr/bin/sh\" r\nallow prefix \"/b/\" \"/usr/bin/sh\" r\n");
    store->reloadCurrentUserConfiguration();
    window->reloadData();
    QApplication::processEvents();
    ASSERT_EQ(text(2, workflow::RuleColumn::application), QString());
    window->deleteRow(1);
    EXPECT_TRUE(showsProgram(1));
}

TEST_F(Commands, DeletingInTheMiddleOfAGroupReloadsNothingElse)
{
    // What is told of the remaining rows is the removal and nothing more.
    QList<int> reloaded;
    QObject::connect(table->model(), &QAbstractItemModel::dataChanged,
        [&reloaded](const QModelIndex& first) { reloaded.append(first.row()); });
    bool isReset = false;
    QObject::connect(table->model(), &QAbstractItemModel::modelReset, [&isReset] { isReset = true; });
    const QVariant band = cell(vi, workflow::RuleColumn::path).data(Qt::BackgroundRole);

    window->deleteRow(next);

    EXPECT_TRUE(reloaded.isEmpty());
    EXPECT_FALSE(isReset);
    EXPECT_EQ(cell(next, workflow::RuleColumn::path).data(Qt::BackgroundRole), band);
}

TEST_F(Commands, DeletingTheOnlyRuleOfTheLastGroupReloadsNothingElse)
{
    QList<int> reloaded;
    QObject::connect(table->model(), &QAbstractItemModel::dataChanged,
        [&reloaded](const QModelIndex& first) { reloaded.append(first.row()); });
    window->deleteRow(vi);
    EXPECT_TRUE(reloaded.isEmpty());
    EXPECT_EQ(table->model()->rowCount(), 3);
}

TEST_F(Commands, AfterADeleteTheRuleThatFollowsIsSelected)
{
    select({head, next});
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(selectedRows(), QList<int>{1});
    EXPECT_EQ(text(1, workflow::RuleColumn::path), QStringLiteral("/c"));
    QTest::keyClick(table, Qt::Key_Up);
    EXPECT_EQ(selectedRows(), QList<int>{0}) << "the keyboard goes on from there";
}

TEST_F(Commands, AfterADeleteOfScatteredRulesTheOneThatFollowsTheLastIsSelected)
{
    select({watch, next});
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(selectedRows(), QList<int>{1});
    EXPECT_EQ(text(1, workflow::RuleColumn::path), QStringLiteral("/c"));
}

TEST_F(Commands, AfterADeleteOfTheLastRuleTheOneBeforeIsSelected)
{
    select({vi});
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(selectedRows(), QList<int>{next});
}

TEST_F(Commands, AfterADeleteByTheContextMenuTheRuleThatFollowsIsSelected)
{
    clickRight(head);
    choose("Delete");
    EXPECT_EQ(selectedRows(), QList<int>{1});
    EXPECT_EQ(text(1, workflow::RuleColumn::path), QStringLiteral("/b/"));
}

TEST_F(Commands, AfterADeleteOfEveryRuleNothingIsSelected)
{
    table->selectAll();
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_TRUE(selectedRows().isEmpty());
}

TEST_F(Commands, ADeleteKeyThatIsHeldDeletesOnce)
{
    for (const int key : {Qt::Key_Delete, Qt::Key_Backspace}) {
        const int before = table->model()->rowCount();
        select({0});
        QTest::keyPress(table, static_cast<Qt::Key>(key));
        QKeyEvent repeated(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(table, &repeated);
        EXPECT_EQ(table->model()->rowCount(), before - 1);
        QTest::keyRelease(table, static_cast<Qt::Key>(key));
        QTest::keyClick(table, static_cast<Qt::Key>(key));
        EXPECT_EQ(table->model()->rowCount(), before - 2);
    }
}

TEST_F(Commands, APressAtTheTimeOfTheReleaseBeforeItIsARepeatOfAHeldKey)
{
    const auto send = [this](QEvent::Type type, quint64 time) {
        QKeyEvent event(type, Qt::Key_Delete, Qt::NoModifier);
        event.setTimestamp(time);
        QApplication::sendEvent(table, &event);
    };
    select({watch});
    send(QEvent::KeyPress, 1000);
    send(QEvent::KeyRelease, 1500);
    send(QEvent::KeyPress, 1500);
    EXPECT_EQ(table->model()->rowCount(), 3);
    send(QEvent::KeyRelease, 1600);
    send(QEvent::KeyPress, 1601);
    EXPECT_EQ(table->model()->rowCount(), 2);
}

TEST_F(Commands, TheContextMenuDeletesTheRuleItWasOpenedOnWhereverItStandsNow)
{
    clickRight(vi);
    contextMenu()->close();
    window->deleteRow(watch);
    window->deleteRule();
    EXPECT_EQ(file(), headLine + nextLine);
    window->deleteRule();
    EXPECT_EQ(file(), headLine + nextLine) << "it is gone";
}

TEST_F(Commands, DeletingAnUnselectedRowKeepsTheSelection)
{
    select({head, vi});
    window->deleteRow(next);
    EXPECT_EQ(selectedRows(), (QList<int>{1, 2}));
    EXPECT_EQ(text(2, workflow::RuleColumn::path), QStringLiteral("/c"));
}

TEST_F(Commands, ASystemRuleIsNotDeletedAndANoticeSaysSo)
{
    showSystemRules();
    window->deleteRow(4);
    ASSERT_EQ(application.notices.size(), 1U);
    EXPECT_EQ(application.notices[0].header, "Cannot Delete System Rule");
    EXPECT_FALSE(application.notices[0].waited);
    EXPECT_EQ(table->model()->rowCount(), 5);
}

TEST_F(Commands, DeleteIsOfferedWhileARuleOfTheUsersIsSelected)
{
    showSystemRules();
    const QAction* toolbar = action("deleteRuleToolbarItem");
    const QAction* menu = action("deleteEditMenuItem");
    table->clearSelection();
    EXPECT_FALSE(toolbar->isEnabled());
    EXPECT_FALSE(menu->isEnabled());
    select({4});
    EXPECT_FALSE(toolbar->isEnabled());
    EXPECT_TRUE(menu->isEnabled()); // it tells why it cannot
    select({4, head});
    EXPECT_TRUE(toolbar->isEnabled());
}

TEST_F(Commands, TheDeleteKeysDeleteWhatIsSelected)
{
    select({watch, vi});
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(file(), headLine + nextLine);
    select({0});
    QTest::keyClick(table, Qt::Key_Backspace);
    EXPECT_EQ(file(), nextLine);
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(Commands, UndoAndRedoAreNamedInTheMenuAndRestoreTheFile)
{
    const std::string before = file();
    select({head});
    QTest::keyClick(table, Qt::Key_Delete);
    const std::string after = file();
    ASSERT_NE(after, before);
    auto* menu = in<QMenu>("editMenu");
    Q_EMIT menu->aboutToShow();
    EXPECT_EQ(action("undoMenuItem")->text(), QStringLiteral("&Undo Delete Rule"));
    EXPECT_FALSE(action("redoMenuItem")->isEnabled());
    Q_EMIT menu->aboutToHide();
    EXPECT_TRUE(action("redoMenuItem")->isEnabled()) << "for the shortcut";
    action("undoMenuItem")->trigger();
    EXPECT_EQ(file(), before);
    EXPECT_EQ(table->model()->rowCount(), 4);
    Q_EMIT menu->aboutToShow();
    EXPECT_EQ(action("redoMenuItem")->text(), QStringLiteral("&Redo Delete Rule"));
    EXPECT_FALSE(action("undoMenuItem")->isEnabled());
    Q_EMIT menu->aboutToHide();
    EXPECT_TRUE(action("undoMenuItem")->isEnabled());
    action("redoMenuItem")->trigger();
    EXPECT_EQ(file(), after);
    EXPECT_EQ(table->model()->rowCount(), 3);
}

TEST_F(Commands, AChangeThatCouldNotBeWrittenIsWrittenFromTheFoot)
{
    const std::string path = box.locations.userRulesFile();
    std::filesystem::rename(path, path + ".away");
    std::filesystem::create_directory(path);
    select({head});
    QTest::keyClick(table, Qt::Key_Delete);
    auto* notices = in<FootNotices>("notices");
    ASSERT_EQ(notices->count(), 1U);
    std::filesystem::remove(path);
    std::filesystem::rename(path + ".away", path);
    for (QPushButton* button : notices->findChildren<QPushButton*>()) {
        if (button->text() == QLatin1String("Write Now")) {
            button->click();
            break;
        }
    }
    EXPECT_EQ(notices->count(), 0U);
    EXPECT_EQ(file(), test::watchLine + nextLine + test::viLine);
}

TEST_F(Commands, TheDeleteKeyOnSystemRulesAloneDeletesNothingRewritesTheFileAndTellsOnce)
{
    showSystemRules();
    box.writeUserRules(
        "; a comment, which a rewrite drops\n" + test::watchLine + headLine + nextLine + test::viLine);
    run.internalWrite = false;
    select({4});
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(table->model()->rowCount(), 5);
    EXPECT_EQ(file(), test::watchLine + headLine + nextLine + test::viLine);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(run.internalWrite);
    ASSERT_EQ(application.notices.size(), 1U);
    EXPECT_EQ(application.notices[0].header, "Cannot Delete System Rules");
}

TEST_F(Commands, AMixedSelectionLosesTheUsersRulesAndTellsOnce)
{
    showSystemRules();
    table->selectAll();
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(file(), "");
    EXPECT_EQ(table->model()->rowCount(), 1);
    EXPECT_EQ(text(0, workflow::RuleColumn::path), QStringLiteral("/system/"));
    EXPECT_EQ(application.notices.size(), 1U);
}

TEST_F(Commands, ReturnOpensASinglePolicyRule)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        select({head, vi});
        QTest::keyClick(table, key);
        EXPECT_EQ(editor<EditPolicyWindowController>(), nullptr);
        select({vi});
        QTest::keyClick(table, key);
        auto* opened = editor<EditPolicyWindowController>();
        ASSERT_NE(opened, nullptr);
        EXPECT_EQ(opened->policyRule()->path().written(), "/c");
        delete opened;
    }
}

TEST_F(Commands, DeliberateReturnOpensNoWatchRule)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        select({watch});
        QTest::keyClick(table, key);
        EXPECT_EQ(editor<RuleEditorWindow>(), nullptr);
    }
}

TEST_F(Commands, ADoubleClickOpensEitherKindAndSystemRulesToo)
{
    showSystemRules();
    for (const int row : {static_cast<int>(watch), 4}) {
        const QPoint place = table->visualRect(cell(row, workflow::RuleColumn::path)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, place);
    }
    ASSERT_NE(editor<EditWatchWindowController>(), nullptr);
    ASSERT_NE(editor<EditPolicyWindowController>(), nullptr);
    EXPECT_TRUE(editor<EditPolicyWindowController>()->policyRule()->system());
}

TEST_F(Commands, KeysPressedWithControlAreLeftToTheTable)
{
    select({0});
    QTest::keyClick(table, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selectedRows().size(), table->model()->rowCount());
}

TEST_F(Commands, ControlFGoesToTheSearchFieldAndPlainFIsPassedOn)
{
    QKeyEvent plain(QEvent::KeyPress, Qt::Key_F, Qt::NoModifier, QStringLiteral("f"));
    EXPECT_FALSE(window->keyDown(plain));
    QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(QApplication::focusWidget(), window->findChild<QLineEdit*>(QStringLiteral("searchField")));
}

TEST_F(Commands, DeleteInTheSearchFieldDeletesLettersAndNoRule)
{
    select({vi});
    auto* search = window->findChild<QLineEdit*>(QStringLiteral("searchField"));
    search->setFocus();
    QTest::keyClicks(search, QStringLiteral("c"));
    QTest::keyClick(search, Qt::Key_Backspace);
    QTest::keyClick(search, Qt::Key_Delete);
    EXPECT_EQ(table->model()->rowCount(), 4);
    EXPECT_EQ(run.g_dirty, 0);
}

TEST_F(Commands, ATagIsTypedInPlaceAndWritten)
{
    typeTag(head, "mine");
    EXPECT_EQ(text(head, workflow::RuleColumn::tag), QStringLiteral("mine"));
    EXPECT_EQ(file(),
        test::watchLine + "allow prefix \"/a/\" \"/bin/sh\" r \"mine\" \"\" \"0\"\n" + nextLine
            + test::viLine);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_TRUE(run.internalWrite);
}

TEST_F(Commands, ATagInTheMakingOutlivesAReload)
{
    table->selectRow(vi);
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("me"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Left);
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    ASSERT_EQ(text(1, workflow::RuleColumn::path), QStringLiteral("/c"));
    EXPECT_EQ(selectedRows(), QList<int>{1});
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("in"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(std::get<rules::PolicyRulePtr>(store->ruleAtIndex(1, false))->tag().view(), "mine");
}

TEST_F(Commands, ATagInTheMakingGoesWithItsRule)
{
    table->selectRow(vi);
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("me"));
    box.writeUserRules(test::watchLine);
    store->reloadCurrentUserConfiguration();
    window->reloadData();
    EXPECT_EQ(table->indexWidget(table->currentIndex()), nullptr);
    EXPECT_EQ(file(), test::watchLine);
}

TEST_F(Commands, ReturnAfterATagEndsItsEditAndOpensNoRule)
{
    typeTag(head, "mine");
    EXPECT_EQ(text(head, workflow::RuleColumn::tag), QStringLiteral("mine"));
    EXPECT_EQ(editor<EditPolicyWindowController>(), nullptr);
    QApplication::processEvents();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_NE(editor<EditPolicyWindowController>(), nullptr) << "the table has the keyboard again";
}

TEST_F(Commands, ATagThatIsPastedStaysOnItsRulesLine)
{
    table->selectRow(head);
    QTest::keyClick(table, Qt::Key_F2);
    auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    ASSERT_NE(field, nullptr);
    field->selectAll();
    QApplication::clipboard()->setText(QStringLiteral("two \"words\"\r\nallow path /\n"));
    field->paste();
    QTest::keyClick(field, Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(file(),
        test::watchLine + "allow prefix \"/a/\" \"/bin/sh\" r \"two wordsallow path /\" \"\" \"0\"\n"
            + nextLine + test::viLine);
}

TEST_F(Commands, ALongTagIsNotCutByBeingEdited)
{
    const std::string tag(40000, 't');
    std::get<rules::PolicyRulePtr>(store->ruleAtIndex(head, false))->setTag(tag);
    window->reloadData();
    table->selectRow(head);
    QTest::keyClick(table, Qt::Key_F2);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_EQ(
        std::get<rules::PolicyRulePtr>(store->ruleAtIndex(head, false))->tag().view().size(), tag.size());
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(Commands, EscapeDropsATag)
{
    typeTag(head, "mine", Qt::Key_Escape);
    EXPECT_EQ(text(head, workflow::RuleColumn::tag), QStringLiteral("one"));
    EXPECT_EQ(run.g_dirty, 0);
}

TEST_F(Commands, EditingATagSelectsItsRowAlone)
{
    table->selectAll();
    table->selectionModel()->setCurrentIndex(
        cell(next, workflow::RuleColumn::path), QItemSelectionModel::NoUpdate);
    QTest::keyClick(table, Qt::Key_F2);
    EXPECT_EQ(selectedRows(), QList<int>{next});
}

TEST_F(Commands, DeliberateATagTypedOverASystemRulesStaysOnTheScreenUntilTheNextReload)
{
    showSystemRules();
    QApplication::processEvents();
    const QString before = text(4, workflow::RuleColumn::tag);
    typeTag(4, "mine");
    EXPECT_EQ(text(4, workflow::RuleColumn::tag), QStringLiteral("mine"));
    ASSERT_EQ(application.notices.size(), 1U);
    EXPECT_EQ(application.notices[0].header, "Cannot Edit System Rules");
    window->reloadData();
    EXPECT_EQ(text(4, workflow::RuleColumn::tag), before);
}

TEST_F(Commands, DeliberateATagActionWithNothingSelectedOnlyWritesTheFile)
{
    table->clearSelection();
    box.writeUserRules(
        "; a comment, which a rewrite drops\n" + test::watchLine + headLine + nextLine + test::viLine);
    window->tableViewCellAction(QStringLiteral("nobody's"));
    EXPECT_EQ(file(), test::watchLine + headLine + nextLine + test::viLine);
    EXPECT_EQ(run.g_dirty, 1);
}

TEST_F(Commands, AFileThatCannotBeWrittenIsToldInTheWindow)
{
    std::filesystem::remove(box.locations.userRulesFile());
    std::filesystem::create_directory(box.locations.userRulesFile());
    EXPECT_EQ(label("failureLabel"), QString());
    window->deleteRow(vi);
    EXPECT_EQ(label("failureLabel"), QString::fromStdString(*store->lastErrorMessage()));
    std::filesystem::remove(box.locations.userRulesFile());
    window->deleteRow(next);
    EXPECT_EQ(label("failureLabel"), QString());
}

TEST_F(Commands, ReloadingWhileAnEditorIsOpenLeavesOneRuleAfterItsSave)
{
    select({vi});
    QTest::keyClick(table, Qt::Key_Return);
    store->reloadCurrentUserConfiguration();
    window->reloadData();
    auto* opened = editor<EditPolicyWindowController>();
    auto* path = opened->findChild<QLineEdit*>(QStringLiteral("pathTextField"));
    path->setText(QStringLiteral("/d"));
    opened->saveClicked();
    EXPECT_EQ(file(),
        test::watchLine + headLine + nextLine + "deny path \"/d\" \"/bin/vi\" w \"\" \"TEAM\" \"0\"\n");
}

TEST_F(Commands, DeletingARuleWhoseEditorIsOpenLetsItsSaveBringItBack)
{
    select({vi});
    QTest::keyClick(table, Qt::Key_Return);
    window->deleteRow(vi);
    EXPECT_EQ(file(), test::watchLine + headLine + nextLine);
    editor<EditPolicyWindowController>()->saveClicked();
    EXPECT_EQ(file(), test::watchLine + headLine + nextLine + test::viLine);
    EXPECT_EQ(table->model()->rowCount(), 4);
}

} // namespace quorvane::windows
