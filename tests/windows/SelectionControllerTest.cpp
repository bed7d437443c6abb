#include "windows/SelectionController.h"

#include "tests/windows/EditorTable.h"
#include "windows/ChangeWindow.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/ImportWindowController.h"
#include "windows/PathField.h"
#include "windows/RulesTableModel.h"
#include "workflow/RuleEdits.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QTimer>

namespace quorvane::windows {

namespace {

const std::string broadLine = "allow prefix \"/b/\" \"/bin/sh\" rw \"two\" \"\" \"0\"\n";
// The commands of the Rules menu, as a person finds them in the main window.
class Selection : public test::EditorTable {
protected:
    enum Row { watch, first, second, vi };

    Selection()
    {
        box.writeSystemFile("quorvane.rc", "allow prefix \"/system/\" \"/usr/bin/zip\" r \"sealed\"\n");
        open(test::watchLine + test::firstLine + broadLine + test::viLine);
        table->setFocus();
    }

    ChangeWindow* preview() const
    {
        for (auto* each : window->findChildren<ChangeWindow*>()) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }
    void selectPath(const QString& path) const
    {
        for (int row = 0; row < table->model()->rowCount(); ++row) {
            if (text(row, workflow::RuleColumn::path) == path)
                select({row});
        }
    }
    template <class Child> Child* control(const char* name) const
    {
        auto* child = preview()->findChild<Child*>(QString::fromLatin1(name));
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    void tick(const char* name) const
    {
        for (auto* each : preview()->findChildren<QCheckBox*>()) {
            if (each->text().remove(QLatin1Char('&')) == QLatin1String(name))
                each->click();
        }
    }
    // What the controls say is planned a moment later.
    void awaitPlan() const
    {
        const auto* soon = preview()->findChild<QTimer*>(QStringLiteral("planTimer"));
        EXPECT_TRUE(QTest::qWaitFor([soon] { return !soon->isActive(); }));
    }
    QString summary() const
    {
        awaitPlan();
        return control<QLabel>("summaryLabel")->text();
    }
    QString remarks() const { return control<QLabel>("remarksLabel")->text().remove(QChar(0x200b)); }
    bool canConfirm() const
    {
        awaitPlan();
        return control<QPushButton>("changeButton")->isEnabled();
    }
    void confirm() const { control<QPushButton>("changeButton")->click(); }
    void namePath(const std::string& path) const { control<PathField>("programField")->setPath(path); }
    void undo() const { action("undoMenuItem")->trigger(); }
    // Asks where the program of a new rule, which is not in the folder, has moved to.
    void askWhereProgramIs(const char* name, const std::string& constraint = {})
    {
        document->perform(workflow::additionOf(test::policyRule({.path = "/t",
                              .processName = box.folder.path(name),
                              .constraint = constraint,
                              .operations = 1})),
            {"Add"});
        window->reloadData();
        selectPath(QStringLiteral("/t"));
        action("programMovedMenuItem")->trigger();
    }
    bool areCandidatesFound() const
    {
        return QTest::qWaitFor([this] { return control<QComboBox>("candidatesPopUp")->isVisible(); });
    }
    // The action has that name, and its Ctrl+Z restores the file to the byte.
    void expectUndoRestores(const std::string& before, const char* name) const
    {
        EXPECT_NE(file(), before);
        EXPECT_EQ(document->undoName(), name);
        undo();
        EXPECT_EQ(file(), before);
    }
};

} // namespace

TEST_F(Selection, IsTaggedAtOnceAfterAPreview)
{
    const std::string before = file();
    select({watch, first, vi});
    action("tagMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    control<QLineEdit>("tagTextField")->setText(QStringLiteral("new"));
    EXPECT_EQ(summary(), QStringLiteral("3 rules changed"));
    EXPECT_EQ(file(), before);
    confirm();
    EXPECT_EQ(preview(), nullptr);
    EXPECT_EQ(file(),
        "watch prefix \"/w/\" \"/bin/sh\" r \"new\"\nallow prefix \"/a/\" \"/bin/sh\" r \"new\" \"\" \"7\"\n"
            + broadLine + "deny path \"/c\" \"/bin/vi\" w \"new\" \"TEAM\" \"0\"\n");
    EXPECT_EQ(selectedPaths(), QStringLiteral("/w/ /a/ /c"));
    expectUndoRestores(before, "Tag 3 Rules");
}

TEST_F(Selection, GetsATagOfOneLine)
{
    select({first, vi});
    action("tagMenuItem")->trigger();
    QApplication::clipboard()->setText(QStringLiteral("new\nallow path /\n"));
    control<QLineEdit>("tagTextField")->paste();
    awaitPlan();
    confirm();
    EXPECT_NE(file().find(" r \"newallow path /\" \"\" \"7\"\n"), std::string::npos) << file();
}

TEST_F(Selection, ShowsTheTagThatItsRulesShare)
{
    select({first});
    action("tagMenuItem")->trigger();
    EXPECT_EQ(control<QLineEdit>("tagTextField")->text(), QStringLiteral("one"));
    EXPECT_EQ(control<QLineEdit>("tagTextField")->selectedText(), QStringLiteral("one"))
        << "to be typed over";
    EXPECT_FALSE(canConfirm());
    preview()->reject();
    select({first, second});
    action("tagMenuItem")->trigger();
    EXPECT_EQ(control<QLineEdit>("tagTextField")->text(), QString());
}

TEST_F(Selection, ClosesThePreviewWithoutAChange)
{
    const std::string before = file();
    select({first, second});
    action("denyMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    control<QPushButton>("cancelButton")->click();
    EXPECT_EQ(preview(), nullptr);
    EXPECT_EQ(file(), before);
}

TEST_F(Selection, OfOneRuleGetsAnotherClassWithoutAPreview)
{
    const std::string before = file();
    select({vi});
    action("allowMenuItem")->trigger();
    EXPECT_EQ(preview(), nullptr);
    EXPECT_EQ(file(),
        test::watchLine + test::firstLine + broadLine
            + "allow path \"/c\" \"/bin/vi\" w \"\" \"TEAM\" \"0\"\n");
    expectUndoRestores(before, "Allow in Rule");
}

TEST_F(Selection, OfSeveralRulesGetsAnotherClassAfterAPreviewAndWatchRulesStay)
{
    const std::string before = file();
    select({watch, first, second});
    action("denyMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    EXPECT_EQ(remarks(), QStringLiteral("Left out: 1 rule of the system or of another kind."));
    confirm();
    EXPECT_NE(file().find("deny prefix \"/a/\""), std::string::npos);
    EXPECT_NE(file().find(test::watchLine), std::string::npos);
    expectUndoRestores(before, "Deny in 2 Rules");
}

TEST_F(Selection, GetsAndLosesOperations)
{
    const std::string before = file();
    select({first, second});
    action("operationsMenuItem")->trigger();
    EXPECT_FALSE(canConfirm());
    EXPECT_EQ(remarks(), QStringLiteral("Tick the operations."));
    tick("Write");
    EXPECT_EQ(summary(), QStringLiteral("1 rule changed"));
    control<QComboBox>("operationsPopUp")->setCurrentIndex(1);
    EXPECT_EQ(summary(), QStringLiteral("1 rule changed"));
    tick("Execute");
    tick("Write");
    control<QComboBox>("operationsPopUp")->setCurrentIndex(2);
    EXPECT_EQ(summary(), QStringLiteral("2 rules changed"));
    confirm();
    EXPECT_NE(file().find("\"/a/\" \"/bin/sh\" x"), std::string::npos);
    EXPECT_NE(file().find("\"/b/\" \"/bin/sh\" x"), std::string::npos);
    expectUndoRestores(before, "Change Operations of 2 Rules");
}

TEST_F(Selection, IsNotLeftWithoutOperations)
{
    select({first});
    action("operationsMenuItem")->trigger();
    control<QComboBox>("operationsPopUp")->setCurrentIndex(1);
    tick("Read");
    EXPECT_FALSE(canConfirm());
    EXPECT_EQ(summary(), QStringLiteral("Nothing can be changed."));
}

TEST_F(Selection, ThatFoldsIsShownFirst)
{
    document->perform(workflow::additionOf(test::policyRule(
                          {.policyClass = 1, .path = "/a/", .processName = "/bin/sh", .operations = 1})),
        {"Add"});
    window->reloadData();
    const std::string before = file();
    window->selectRules({store->userRules()[1]});
    ASSERT_EQ(selectedPaths(), QStringLiteral("/a/"));
    action("denyMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    EXPECT_EQ(summary(), QStringLiteral("1 rule removed"));
    confirm();
    expectUndoRestores(before, "Deny in Rule");
}

TEST_F(Selection, LosesItsConstraintAndIsBoundAnew)
{
    const std::string before = file();
    select({vi});
    action("clearConstraintMenuItem")->trigger();
    EXPECT_NE(file().find("\"/bin/vi\" w \"\" \"\" \"0\""), std::string::npos);
    expectUndoRestores(before, "Clear Constraint of Rule");
    const std::string program = box.folder.write("tool", "a program");
    document->perform(
        workflow::additionOf(test::policyRule({.path = "/t", .processName = program, .operations = 1})),
        {"Add"});
    window->reloadData();
    selectPath(QStringLiteral("/t"));
    const std::string unbound = file();
    action("rebindMenuItem")->trigger();
    EXPECT_EQ(preview(), nullptr);
    expectUndoRestores(unbound, "Bind Rule");
}

TEST_F(Selection, StaysBoundWhereTheProgramIsGoneAndSaysSo)
{
    document->perform(
        workflow::additionOf(test::policyRule(
            {.path = "/t", .processName = "/nowhere/tool", .constraint = "TEAM", .operations = 1})),
        {"Add"});
    window->reloadData();
    selectPath(QStringLiteral("/t"));
    action("rebindMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    EXPECT_FALSE(canConfirm());
    EXPECT_EQ(
        remarks(), QStringLiteral("The constraint stays for '/nowhere/tool': the program is not there."));
}

TEST_F(Selection, IsCopiedToAnotherProgram)
{
    const std::string before = file();
    select({first, second});
    action("copyToProgramMenuItem")->trigger();
    EXPECT_FALSE(canConfirm());
    namePath("/nowhere/tool");
    EXPECT_EQ(summary(), QStringLiteral("2 rules added"));
    confirm();
    EXPECT_NE(
        file().find("allow prefix \"/a/\" \"/nowhere/tool\" r \"one\" \"\" \"0\"\n"), std::string::npos);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/a/ /b/"));
    expectUndoRestores(before, "Copy 2 Rules");
}

TEST_F(Selection, AsksForAProgramInWordsWhileNoneIsNamed)
{
    select({first, second});
    action("copyToProgramMenuItem")->trigger();
    const QString asked = QStringLiteral("Name the program by its whole path.");
    EXPECT_EQ(remarks(), asked);
    for (const char* path : {"tool", "/bin/sh via /bin/vi"}) {
        namePath(path);
        EXPECT_FALSE(canConfirm()) << path;
        EXPECT_EQ(remarks(), asked) << path;
    }
    preview()->reject();
    action("programMovedMenuItem")->trigger();
    namePath("tool");
    EXPECT_FALSE(canConfirm());
    EXPECT_EQ(remarks(), asked);
}

TEST_F(Selection, IsAskedForInTheFirstControlWhichHasTheKeyboard)
{
    const struct {
        const char* command;
        const char* control;
    } cases[] = {{"tagMenuItem", "tagTextField"}, {"operationsMenuItem", "operationsPopUp"},
        {"copyToProgramMenuItem", "programField"}, {"programMovedMenuItem", "programField"}};
    for (const auto& c : cases) {
        select({first});
        action(c.command)->trigger();
        const auto* wanted = control<QWidget>(c.control);
        EXPECT_TRUE(QTest::qWaitFor([wanted] {
            const QWidget* has = QApplication::focusWidget();
            return has != nullptr && (has == wanted || wanted->isAncestorOf(has));
        })) << c.command;
        preview()->reject();
    }
}

TEST_F(Selection, IsWalkedByTabFromItsControlsToItsButtons)
{
    select({first});
    action("tagMenuItem")->trigger();
    ASSERT_TRUE(QTest::qWaitForWindowActive(preview()));
    control<QLineEdit>("tagTextField")->setText(QStringLiteral("other"));
    ASSERT_TRUE(canConfirm());
    QStringList walked;
    for (int step = 0; step < 3; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        walked.append(QApplication::focusWidget()->objectName());
    }
    EXPECT_EQ(walked.join(QLatin1Char(' ')), QStringLiteral("differenceTableView cancelButton changeButton"));
}

TEST_F(Selection, OfSystemRulesIsCopiedToo)
{
    action("hideSystemToolbarItem")->trigger();
    window->selectRules({store->allRules().back()});
    action("copyToProgramMenuItem")->trigger();
    namePath("/nowhere/tool");
    confirm();
    EXPECT_NE(file().find("allow prefix \"/system/\" \"/nowhere/tool\" r"), std::string::npos);
}

TEST_F(Selection, OfSystemRulesIsLeftOutOfEverythingElse)
{
    action("hideSystemToolbarItem")->trigger();
    window->selectRules({store->allRules().back(), store->userRules()[1]});
    action("tagMenuItem")->trigger();
    EXPECT_EQ(remarks(), QStringLiteral("Left out: 1 rule of the system or of another kind."));
}

TEST_F(Selection, IsPreviewedInOneWindowAtATime)
{
    select({first, second});
    action("tagMenuItem")->trigger();
    action("denyMenuItem")->trigger();
    EXPECT_EQ(window->findChildren<ChangeWindow*>().size(), 1);
    EXPECT_EQ(preview()->windowTitle(), QStringLiteral("Deny"));
}

TEST_F(Selection, FollowsItsProgramWithAllOfItsRules)
{
    const std::string before = file();
    select({first});
    action("programMovedMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    EXPECT_FALSE(control<QComboBox>("candidatesPopUp")->isVisible());
    namePath("/nowhere/sh");
    EXPECT_EQ(summary(), QStringLiteral("3 rules changed"));
    confirm();
    EXPECT_EQ(file().find("\"/bin/sh\""), std::string::npos);
    expectUndoRestores(before, "Move 3 Rules");
}

TEST_F(Selection, IsOfferedTheOtherVersionOfAProgramThatIsGone)
{
    const std::string newer = box.folder.write("tool-2", "a program");
    askWhereProgramIs("tool-1");
    EXPECT_TRUE(areCandidatesFound());
    EXPECT_EQ(
        control<QComboBox>("candidatesPopUp")->currentText().toStdString(), newer + " (another version)");
    EXPECT_EQ(control<PathField>("programField")->path(), newer);
    EXPECT_EQ(summary(), QStringLiteral("1 rule changed"));
}

TEST_F(Selection, IsOfferedAProgramThatIsWhatItsRulesAreBoundTo)
{
    const std::string moved = box.folder.write("bin/tool", "text");
    askWhereProgramIs("tool", "982d9e3eb996f559e633f4d194def3761d909f5a3b647d1a851fead67c32c9d1");
    EXPECT_TRUE(areCandidatesFound());
    EXPECT_EQ(control<QComboBox>("candidatesPopUp")->currentText().toStdString(),
        moved + " (has what the rules are bound to)");
}

TEST_F(Selection, TakesTheCandidateThatIsChosen)
{
    box.folder.write("tool-2", "a program");
    box.folder.write("tool-3", "a program");
    askWhereProgramIs("tool-1");
    EXPECT_TRUE(areCandidatesFound());
    auto* candidates = control<QComboBox>("candidatesPopUp");
    ASSERT_EQ(candidates->count(), 2);
    candidates->setFocus();
    QTest::keyClick(candidates, Qt::Key_Down);
    EXPECT_EQ(control<PathField>("programField")->path(), box.folder.path("tool-2"));
}

TEST_F(Selection, KeepsTheProgramThatWasNamedBeforeOthersWereFound)
{
    box.folder.write("tool-2", "a program");
    askWhereProgramIs("tool-1");
    namePath("/nowhere/tool");
    EXPECT_TRUE(areCandidatesFound());
    EXPECT_EQ(control<PathField>("programField")->path(), "/nowhere/tool");
}

TEST_F(Selection, IsOfferedNothingInAWindowThatIsClosedByThen)
{
    box.folder.write("tool-2", "a program");
    askWhereProgramIs("tool-1");
    delete preview();
    select({vi});
    action("programMovedMenuItem")->trigger(); // is looked for after the other
    action("programMovedMenuItem")->trigger();
    askWhereProgramIs("tool-1");
    EXPECT_TRUE(areCandidatesFound());
}

TEST_F(Selection, WithoutAProgramCannotMove)
{
    document->perform(
        workflow::additionOf(test::policyRule({.path = "/t", .processName = "any", .operations = 1})),
        {"Add"});
    window->reloadData();
    selectPath(QStringLiteral("/t"));
    action("programMovedMenuItem")->trigger();
    EXPECT_EQ(preview(), nullptr);
    EXPECT_EQ(notice(), QStringLiteral("The rule names no program that could have moved."));
    action("programMovedMenuItem")->trigger();
    EXPECT_EQ(in<FootNotices>("notices")->count(), 1U) << "which is said once";
}

TEST_F(Selection, IsChangedInWindowsThatSayWhatTheyDo)
{
    const struct {
        const char* item;
        const char* title;
        const char* verb;
    } commands[] = {
        {"tagMenuItem", "Tag", "Tag"},
        {"allowMenuItem", "Allow", "Allow"},
        {"denyMenuItem", "Deny", "Deny"},
        {"operationsMenuItem", "Change Operations", "Change"},
        {"rebindMenuItem", "Bind Anew", "Bind"},
        {"clearConstraintMenuItem", "Clear Constraint", "Clear"},
        {"copyToProgramMenuItem", "Copy Rules to Another Program", "Copy"},
        {"programMovedMenuItem", "Program Moved", "Move Rules"},
    };
    for (const auto& command : commands) {
        select({watch, first, second, vi});
        action(command.item)->trigger();
        ASSERT_NE(preview(), nullptr) << command.item;
        EXPECT_EQ(preview()->windowTitle(), QLatin1String(command.title));
        EXPECT_EQ(control<QPushButton>("changeButton")->text(), QLatin1String(command.verb));
        preview()->reject();
    }
}

TEST_F(Selection, IsChangedByControlsThatSayWhatTheyAreFor)
{
    const struct {
        const char* item;
        const char* labels;
    } commands[] = {
        {"tagMenuItem", "&Tag"},
        {"operationsMenuItem", "&How|Operations"},
        {"copyToProgramMenuItem", "&Program"},
        {"programMovedMenuItem", "Rules of|/bin/sh|&Found|Now &at"},
    };
    for (const auto& command : commands) {
        select({first, second});
        action(command.item)->trigger();
        QStringList labels;
        auto* form = preview()->findChild<QFormLayout*>();
        for (const auto* label : form->parentWidget()->findChildren<QLabel*>(Qt::FindDirectChildrenOnly))
            labels.append(label->text());
        labels.sort();
        QStringList expected = QString::fromLatin1(command.labels).split(QLatin1Char('|'));
        expected.sort();
        EXPECT_EQ(labels.join(QLatin1Char('|')), expected.join(QLatin1Char('|'))) << command.item;
        preview()->reject();
    }
    action("tagMenuItem")->trigger();
    EXPECT_EQ(
        control<QLineEdit>("tagTextField")->placeholderText(), QStringLiteral("Nothing takes the tags away"));
    preview()->reject();
    action("operationsMenuItem")->trigger();
    const auto* kinds = control<QComboBox>("operationsPopUp");
    EXPECT_EQ(
        kinds->itemText(0) + kinds->itemText(1) + kinds->itemText(2), QStringLiteral("AddTake awaySet to"));
    preview()->reject();
    action("copyToProgramMenuItem")->trigger();
    EXPECT_EQ(control<PathField>("programField")->focusProxy()->accessibleName(), QStringLiteral("Program"));
    preview()->reject();
    action("programMovedMenuItem")->trigger();
    EXPECT_EQ(control<PathField>("programField")->focusProxy()->accessibleName(),
        QStringLiteral("Present path of the program"));
}

TEST_F(Selection, ThatAnotherProgramChangesIsPlannedAnewInTheOpenPreview)
{
    select({first, second});
    action("tagMenuItem")->trigger();
    control<QLineEdit>("tagTextField")->setText(QStringLiteral("new"));
    document->perform(workflow::deletionOf(*store, {store->userRules()[1]}), {"Delete Rule"});
    window->reloadData();
    EXPECT_EQ(summary(), QStringLiteral("1 rule changed"));
    EXPECT_EQ(remarks(), QString()) << "a rule that is gone is not left out";
    confirm();
    EXPECT_EQ(file().find("/a/"), std::string::npos);
}

TEST_F(Selection, IsChangedOnceLinesAreWrittenWholeWhereThatWouldCutAnotherRule)
{
    workflow::ProgramSettings whole;
    whole.wholeLines = true;
    document->setSettings(whole);
    document->perform(
        workflow::additionOf(test::policyRule({.path = "/Müsik/", .processName = "any", .operations = 1})),
        {"Add"});
    document->setSettings({});
    window->reloadData();
    selectPath(QStringLiteral("/c"));
    action("allowMenuItem")->trigger();
    ASSERT_NE(preview(), nullptr);
    EXPECT_FALSE(canConfirm());
    auto* wholeLines = control<QPushButton>("wholeLinesButton");
    EXPECT_TRUE(wholeLines->isVisible());
    wholeLines->click();
    EXPECT_FALSE(wholeLines->isVisible());
    EXPECT_EQ(preview()->focusWidget(), control<QPushButton>("changeButton")) << "Return goes on";
    EXPECT_TRUE(document->settings().wholeLines);
    confirm();
    EXPECT_NE(file().find("allow path \"/c\""), std::string::npos);
    EXPECT_NE(file().find("\"/Müsik/\" \"any\" r \"\" \"\" \"0\"\n"), std::string::npos);
}

TEST_F(Selection, IsCopiedAsLinesAndPastedThroughTheReview)
{
    select({watch, vi});
    action("copyMenuItem")->trigger();
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), test::watchLine + test::viLine);
    const std::string before = file();
    select({vi});
    action("deleteEditMenuItem")->trigger();
    action("pasteMenuItem")->trigger();
    auto* review = window->findChild<ImportWindowController*>();
    ASSERT_NE(review, nullptr);
    EXPECT_EQ(review->windowTitle(), QStringLiteral("Import Rules - Pasted Text"));
    EXPECT_EQ(review->numberOfRowsInTableView(), 2U);
    review->importAction();
    EXPECT_EQ(file(), before);
    EXPECT_EQ(document->undoName(), "Paste Rules");
}

TEST_F(Selection, IsNotReplacedByTextWithoutRules)
{
    QApplication::clipboard()->setText(QStringLiteral("just some words"));
    action("pasteMenuItem")->trigger();
    EXPECT_EQ(window->findChild<ImportWindowController*>(), nullptr);
    EXPECT_EQ(notice(), QStringLiteral("There are no rules in that text."));
    action("pasteMenuItem")->trigger();
    EXPECT_EQ(in<FootNotices>("notices")->count(), 1U);
}

TEST_F(Selection, IsJoinedByTextThatIsDropped)
{
    QMimeData data;
    data.setText(QStringLiteral("allow prefix \"/new/\" \"/bin/sh\" r"));
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent dropped({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &dropped);
    EXPECT_TRUE(QTest::qWaitFor([this] { return window->findChild<ImportWindowController*>() != nullptr; }));
}

TEST_F(Selection, OfOneRuleIsDuplicatedInAnEditor)
{
    const std::string before = file();
    select({first});
    action("duplicateMenuItem")->trigger();
    auto* editor = window->findChild<EditPolicyWindowController*>();
    ASSERT_NE(editor, nullptr);
    auto* path = editor->findChild<QLineEdit*>(QStringLiteral("pathTextField"));
    EXPECT_EQ(path->text(), QStringLiteral("/a/"));
    path->setText(QStringLiteral("/d/"));
    editor->saveClicked();
    EXPECT_EQ(file(),
        test::watchLine + test::firstLine + broadLine
            + "allow prefix \"/d/\" \"/bin/sh\" r \"one\" \"\" \"0\"\n" + test::viLine);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/d/"));
    expectUndoRestores(before, "Add Rule");
}

TEST_F(Selection, ADuplicateDoesNotTakeThePlaceOfTheOriginal)
{
    select({first});
    action("duplicateMenuItem")->trigger();
    window->findChild<EditPolicyWindowController*>()->saveClicked();
    EXPECT_EQ(store->userRules().size(), 5U);
    EXPECT_NE(file().find(test::firstLine), std::string::npos);
}

TEST_F(Selection, DecidesWhatCanBeChosen)
{
    table->clearSelection();
    for (const char* name : {"tagMenuItem", "allowMenuItem", "denyMenuItem", "operationsMenuItem",
             "rebindMenuItem", "clearConstraintMenuItem", "copyToProgramMenuItem", "programMovedMenuItem",
             "copyMenuItem", "duplicateMenuItem"}) {
        EXPECT_FALSE(action(name)->isEnabled()) << name;
    }
    select({first});
    EXPECT_TRUE(action("duplicateMenuItem")->isEnabled());
    select({first, second});
    EXPECT_TRUE(action("tagMenuItem")->isEnabled());
    EXPECT_FALSE(action("duplicateMenuItem")->isEnabled());
}

} // namespace quorvane::windows
