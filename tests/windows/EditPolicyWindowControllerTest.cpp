#include "windows/EditPolicyWindowController.h"
#include "rules/RuleCodes.h"
#include "tests/windows/EditorWindow.h"

#include <QAccessible>
#include <QWindow>

namespace quorvane::windows {

namespace {

class EditPolicyWindow : public test::EditorWindow<EditPolicyWindowController> {
protected:
    void open(const rules::PolicyRulePtr& rule)
    {
        EditorWindow::open([&](EditPolicyWindowController& window) { window.setPolicyRule(rule); });
    }
    rules::PolicyRulePtr openStored(rules::PolicyRuleFields fields)
    {
        const auto rule = test::policyRule(std::move(fields));
        store.addPolicyRule(rule);
        open(rule);
        return rule;
    }
    std::string constraintKindShown() const { return fromQt(label("constraintTypeTextField")->text()); }
    bool showsIcon() const { return !label("iconImageView")->pixmap(Qt::ReturnByValue).isNull(); }
    QRgb middleOfIcon() const
    {
        const QImage image = label("iconImageView")->pixmap(Qt::ReturnByValue).toImage();
        return image.pixel(image.width() / 2, image.height() / 2);
    }
    void writeLockImage(QColor color, int size) const
    {
        std::filesystem::create_directories(locations.systemFolder());
        QImage image(size, size, QImage::Format_RGB32);
        image.fill(color);
        EXPECT_TRUE(image.save(toQt(locations.noticeIconFile())));
    }
};

const rules::PolicyRuleFields samplePolicyRule{.policyClass = rules::PolicyClass::deny,
    .policyType = rules::PolicyType::suffix,
    .path = ".jpg",
    .processName = "/bin/sh via /usr/sbin/cron",
    .tag = "mine",
    .constraint = "ABCDE12345",
    .operations = 1 | 8,
    .created = 77};

} // namespace

TEST_F(EditPolicyWindow, ShowsTheFieldsOfTheRule)
{
    open(test::policyRule(samplePolicyRule));
    EXPECT_EQ(popUp("policyClassPopUp")->currentIndex(), rules::PolicyClass::deny);
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::suffix);
    EXPECT_EQ(text("pathTextField"), ".jpg");
    EXPECT_EQ(text("processNameTextField"), "/bin/sh via /usr/sbin/cron");
    EXPECT_EQ(text("constraintTextField"), "ABCDE12345");
    EXPECT_TRUE(box("opReadButton")->isChecked());
    EXPECT_FALSE(box("opWriteButton")->isChecked());
    EXPECT_FALSE(box("opCreateButton")->isChecked());
    EXPECT_TRUE(box("opMountButton")->isChecked());
    EXPECT_FALSE(box("opExecButton")->isChecked());
    EXPECT_EQ(editor->windowTitle(), QStringLiteral("sh"));
    EXPECT_TRUE(button("cancelButton")->isVisible());
    EXPECT_EQ(button("saveButton")->text(), QStringLiteral("Save"));
    EXPECT_FALSE(label("systemImageView")->isVisible());
    EXPECT_EQ(log.lines(),
        std::vector<std::string>{
            "-[EditPolicyWindowController updatePolicyEditor] path .jpg process /bin/sh via "
            "/usr/sbin/cron"});
}

TEST_F(EditPolicyWindow, OpensOnTheNullTextsOfANewRule)
{
    open(test::policyRule({.constraint = std::nullopt}));
    EXPECT_EQ(text("pathTextField"), "");
    EXPECT_EQ(text("constraintTextField"), "");
    EXPECT_FALSE(canSave());
    EXPECT_TRUE(field("pathTextField")->hasFocus());
    EXPECT_EQ(log.lines(),
        std::vector<std::string>{
            "-[EditPolicyWindowController updatePolicyEditor] path (null) process (null)"});
}

TEST_F(EditPolicyWindow, CanSaveOnceBothPathAndProgramHoldACharacter)
{
    open(test::policyRule({.path = "/p", .processName = ""}));
    EXPECT_FALSE(canSave());
    type("processNameTextField", "x");
    EXPECT_TRUE(canSave());
    type("pathTextField", "");
    EXPECT_FALSE(canSave());
    type("pathTextField", " ");
    EXPECT_TRUE(canSave());
}

TEST_F(EditPolicyWindow, TheTypeFollowsThePathAsItIsTyped)
{
    open(test::policyRule({.path = "/p", .processName = "any"}));
    const struct {
        const char* typed;
        std::int32_t type;
    } cases[] = {{"/Users/", rules::PolicyType::prefix}, {"/Users/a", rules::PolicyType::path},
        {".jpg", rules::PolicyType::suffix}, {".git/", rules::PolicyType::suffix},
        {"", rules::PolicyType::path}};
    for (const auto& c : cases) {
        type("pathTextField", c.typed);
        EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), c.type) << c.typed;
    }
}

TEST_F(EditPolicyWindow, TheTypeChosenByHandLastsUntilTheNextKeyInThePath)
{
    open(test::policyRule({.policyType = rules::PolicyType::suffix, .path = "/p", .processName = "any"}));
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::suffix)
        << "opening changes nothing";
    popUp("policyTypePopUp")->setCurrentIndex(rules::PolicyType::prefix);
    type("processNameTextField", "/bin/sh");
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::prefix);
    QTest::keyClick(field("pathTextField"), Qt::Key_A);
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::path);
}

TEST_F(EditPolicyWindow, TheConstraintIsNamedByItsLength)
{
    open(test::policyRule({.constraint = std::string(40, 'a')}));
    EXPECT_EQ(constraintKindShown(), "SHA1");
    type("constraintTextField", std::string(41, 'a').c_str());
    EXPECT_EQ(constraintKindShown(), "Team ID");
    type("constraintTextField", std::string(64, 'z').c_str());
    EXPECT_EQ(constraintKindShown(), "SHA256");
    type("constraintTextField", "");
    EXPECT_EQ(constraintKindShown(), "Team ID");
}

TEST_F(EditPolicyWindow, TheConstraintsKindIsTheNameOfItsField)
{
    open(test::policyRule({.constraint = std::string(40, 'a')}));
    EXPECT_EQ(label("constraintTypeTextField")->buddy(), field("constraintTextField"));
    const QAccessibleInterface* shown = QAccessible::queryAccessibleInterface(field("constraintTextField"));
    EXPECT_EQ(shown->text(QAccessible::Name), QStringLiteral("SHA1"));
}

TEST_F(EditPolicyWindow, EveryTextFieldAndPopUpHasALabel)
{
    open(test::policyRule(samplePolicyRule));
    QList<QWidget*> unnamed;
    for (QWidget* control : editor->findChildren<QWidget*>()) {
        if (qobject_cast<QLineEdit*>(control) != nullptr || qobject_cast<QComboBox*>(control) != nullptr)
            unnamed.append(control);
    }
    EXPECT_EQ(unnamed.size(), 5);
    for (const QLabel* shown : editor->findChildren<QLabel*>())
        unnamed.removeAll(shown->buddy());
    EXPECT_TRUE(unnamed.isEmpty());
}

TEST_F(EditPolicyWindow, ShowsTheLockForAnyProgramAndNothingElse)
{
    writeLockImage(Qt::magenta, 32);
    open(test::policyRule({.path = "/p", .processName = "any"}));
    EXPECT_EQ(middleOfIcon(), QColor(Qt::magenta).rgb());
    EXPECT_EQ(label("iconImageView")->pixmap(Qt::ReturnByValue).deviceIndependentSize(), QSizeF(96, 96));
    QTest::keyClick(field("processNameTextField"), Qt::Key_End);
    QTest::keyClick(field("processNameTextField"), Qt::Key_Space);
    EXPECT_EQ(text("processNameTextField"), "any ");
    EXPECT_FALSE(showsIcon());
}

TEST_F(EditPolicyWindow, ShowsNoLockWhenItsImageIsMissingOrDamaged)
{
    open(test::policyRule({.path = "/p", .processName = "any"}));
    EXPECT_FALSE(showsIcon());
    folder.write("Library/Application Support/Quorvane/lock.png", "no image");
    editor->setApplicationIcon();
    EXPECT_FALSE(showsIcon());
}

TEST_F(EditPolicyWindow, ShowsTheIconOfAProgramThatExists)
{
    const std::string tool = folder.write("tool", "");
    open(test::policyRule({.path = "/p", .processName = tool}));
    EXPECT_TRUE(showsIcon());
    EXPECT_EQ(label("iconImageView")->accessibleDescription(), QStringLiteral("tool"));
    type("processNameTextField", (tool + "s").c_str());
    EXPECT_FALSE(showsIcon());
    EXPECT_TRUE(label("iconImageView")->accessibleDescription().isEmpty());
    type("processNameTextField", (tool + " via /bin/sh").c_str());
    EXPECT_TRUE(showsIcon());
    type("processNameTextField", (tool + " via any").c_str());
    EXPECT_TRUE(showsIcon());
}

TEST_F(EditPolicyWindow, SavingPutsTheControlsIntoTheRuleAndWritesTheFile)
{
    const auto rule = openStored(samplePolicyRule);
    popUp("policyClassPopUp")->setCurrentIndex(rules::PolicyClass::allow);
    type("pathTextField", "/Users/ann/");
    type("processNameTextField", "/usr/bin/env");
    type("constraintTextField", "");
    QTest::mouseClick(box("opWriteButton"), Qt::LeftButton);
    QTest::mouseClick(box("opMountButton"), Qt::LeftButton);
    click("saveButton");

    EXPECT_EQ(file(), "allow prefix \"/Users/ann/\" \"/usr/bin/env\" rw \"mine\" \"\" \"77\"\n");
    EXPECT_EQ(test::rowsAsText(store, true), file());
    EXPECT_EQ(std::get<rules::PolicyRulePtr>(store.ruleAtIndex(0, true)), rule);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_EQ(delegate.reloads, 1);
    EXPECT_EQ(log.lines().back(), "-[EditPolicyWindowController saveClicked:]");
    EXPECT_FALSE(editor->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); })) << "deletes itself";
}

TEST_F(EditPolicyWindow, SavingUnchangedControlsChangesNothing)
{
    for (const std::string& path : {std::string("/with\ttab"), std::string("\xEF\xBB\xBF/mark"),
             std::string("/caf\xC3\xA9"), std::string(" /blanks "), std::string(100000, 'p')}) {
        const auto rule = openStored({.path = path, .processName = "any", .operations = 1});
        click("saveButton");
        EXPECT_EQ(rule->path().view(), path);
    }
}

TEST_F(EditPolicyWindow, SavingWithEveryBoxOffStoresNoOperation)
{
    const auto rule = openStored(samplePolicyRule);
    QTest::mouseClick(box("opReadButton"), Qt::LeftButton);
    QTest::mouseClick(box("opMountButton"), Qt::LeftButton);
    click("saveButton");
    EXPECT_EQ(rule->operations(), 0U);
}

TEST_F(EditPolicyWindow, EachBoxStandsForItsBit)
{
    const auto rule = openStored({.path = "/p", .processName = "any"});
    const struct {
        const char* name;
        std::uint32_t bit;
    } boxes[] = {{"opReadButton", 1}, {"opWriteButton", 2}, {"opCreateButton", 4}, {"opMountButton", 8},
        {"opExecButton", 16}};
    for (const auto& b : boxes) {
        open(rule);
        for (const auto& other : boxes)
            box(other.name)->setChecked(b.bit == other.bit);
        click("saveButton");
        EXPECT_EQ(rule->operations(), b.bit) << b.name;
    }
}

TEST_F(EditPolicyWindow, KeepsAClassAndTypeThatHaveNoItem)
{
    const auto rule = openStored({.policyClass = rules::unknownCode,
        .policyType = rules::unknownCode,
        .path = "/p",
        .processName = "any",
        .operations = 1});
    EXPECT_EQ(popUp("policyClassPopUp")->currentIndex(), -1);
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), -1);
    click("saveButton");
    EXPECT_EQ(file(), "err err \"/p\" \"any\" r \"\" \"\" \"0\"\n");
}

TEST_F(EditPolicyWindow, SavesWithoutADelegate)
{
    const auto rule = openStored(samplePolicyRule);
    editor->setDelegate(nullptr);
    click("saveButton");
    EXPECT_NE(file(), "");
    EXPECT_EQ(delegate.reloads, 0);
}

TEST_F(EditPolicyWindow, ClosesEvenWhenTheFileCannotBeWritten)
{
    openStored(samplePolicyRule);
    std::filesystem::remove_all(locations.sharedFolder());
    click("saveButton");
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(delegate.reloads, 1);
}

TEST_F(EditPolicyWindow, ReturnInATextFieldSavesWhenTheRuleIsComplete)
{
    const auto rule = openStored(
        {.policyType = rules::PolicyType::path, .path = "/p", .processName = "", .operations = 1});
    QTest::keyClick(field("pathTextField"), Qt::Key_Return);
    EXPECT_TRUE(editor->isVisible());
    EXPECT_EQ(run.g_dirty, 0);
    type("processNameTextField", "any");
    QTest::keyClick(field("processNameTextField"), Qt::Key_Return);
    EXPECT_EQ(file(), "allow path \"/p\" \"any\" r \"\" \"\" \"0\"\n");
}

TEST_F(EditPolicyWindow, CancellingDropsWhatWasTyped)
{
    const auto leave = [&](const std::function<void()>& how, bool isLogged) {
        const auto rule = openStored(samplePolicyRule);
        type("pathTextField", "/typed");
        how();
        EXPECT_EQ(rule->path().view(), ".jpg");
        EXPECT_EQ(rule->policyType(), rules::PolicyType::suffix);
        EXPECT_EQ(run.g_dirty, 0);
        EXPECT_EQ(delegate.reloads, 0);
        EXPECT_EQ(log.lines().back() == "-[EditPolicyWindowController cancelClicked:]", isLogged);
        EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); }));
    };
    leave([&] { editor->close(); }, false);
    leave([&] { click("cancelButton"); }, true);
    leave([&] { QTest::keyClick(field("pathTextField"), Qt::Key_Escape); }, true);
}

TEST_F(EditPolicyWindow, ShowsASystemRuleReadOnly)
{
    open(test::policyRule(samplePolicyRule));
    const QRect saveFrame = button("saveButton")->geometry();
    rules::PolicyRuleFields fields = samplePolicyRule;
    fields.system = true;
    const auto rule = test::policyRule(fields);
    open(rule);

    EXPECT_FALSE(button("saveButton")->isVisible());
    EXPECT_EQ(button("cancelButton")->geometry(), saveFrame);
    EXPECT_TRUE(button("cancelButton")->hasFocus());
    for (const char* name : {"pathTextField", "processNameTextField", "constraintTextField"})
        EXPECT_TRUE(field(name)->isReadOnly()) << name;
    for (const char* name : {"policyClassPopUp", "policyTypePopUp", "browsePathButton", "browseProcessButton",
             "opReadButton", "opWriteButton", "opCreateButton", "opMountButton", "opExecButton"})
        EXPECT_FALSE(in<QWidget>(*editor, name)->isEnabled()) << name;
    EXPECT_TRUE(label("systemImageView")->isVisible());
    const QPixmap mark = label("systemImageView")->pixmap(Qt::ReturnByValue);
    EXPECT_EQ(mark.deviceIndependentSize(), QSizeF(12, 12));
    EXPECT_NEAR(qAlpha(mark.toImage().pixel(6, 3)), 204, 1) << "opacity 0.8";

    // when it is saved all the same, that is a cancel
    editor->saveClicked();
    EXPECT_EQ(run.g_dirty, 0);
    EXPECT_EQ(store.totalRules(true), 0U);
    EXPECT_FALSE(std::filesystem::exists(locations.userRulesFile()));
    const auto lines = log.lines();
    EXPECT_EQ(lines.at(lines.size() - 2), "-[EditPolicyWindowController saveClicked:]");
    EXPECT_EQ(lines.back(), "-[EditPolicyWindowController cancelClicked:]");
    EXPECT_FALSE(editor->isVisible());
}

TEST_F(EditPolicyWindow, TwoEditorsOfOneRuleLeaveOneRuleAndTheLastSaveWins)
{
    const auto rule = openStored({.path = "/p", .processName = "any", .operations = 1});
    const QPointer<EditPolicyWindowController> first = editor;
    open(rule);
    EXPECT_TRUE(first->isVisible());
    type("pathTextField", "/second");
    click("saveButton");
    EXPECT_EQ(file(), "allow path \"/second\" \"any\" r \"\" \"\" \"0\"\n");
    editor = first;
    type("pathTextField", "/first");
    click("saveButton");
    EXPECT_EQ(file(), "allow path \"/first\" \"any\" r \"\" \"\" \"0\"\n");
    EXPECT_EQ(store.totalRules(true), 1U);
}

TEST_F(EditPolicyWindow, SavingBringsBackARuleThatWasDeletedMeanwhile)
{
    const auto rule = openStored(samplePolicyRule);
    store.deletePolicyRule(*rule);
    click("saveButton");
    EXPECT_EQ(store.totalRules(true), 1U);
    EXPECT_EQ(file(), test::rowsAsText(store, true));
    EXPECT_NE(file(), "");
}

TEST_F(EditPolicyWindow, SavingReplacesTheRuleThatTheStoreHasReadAnewMeanwhile)
{
    folder.write("Users/Shared/Quorvane/ann.quorvane.rc", "allow path /p any r tag\n");
    store.reloadCurrentUserConfiguration();
    open(std::get<rules::PolicyRulePtr>(store.ruleAtIndex(0, true)));
    store.reloadCurrentUserConfiguration();
    type("pathTextField", "/q");
    click("saveButton");
    EXPECT_EQ(file(), "allow path \"/q\" \"any\" r \"tag\" \"\" \"0\"\n");
}

TEST_F(EditPolicyWindow, AChosenFolderGetsASlashAndKeepsItsSpaces)
{
    std::filesystem::create_directories(folder.path("My  Photos"));
    open(test::policyRule({.policyType = rules::PolicyType::path, .path = "", .processName = "any"}));
    choose("browsePathButton", folder.path("My  Photos"));
    EXPECT_EQ(text("pathTextField"), folder.path("My  Photos/"));
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::prefix);
    EXPECT_TRUE(canSave());
}

TEST_F(EditPolicyWindow, AChosenNameComesAsItIs)
{
    open(test::policyRule({.path = "", .processName = "any"}));
    choose("browsePathButton", folder.write("Käse #1 100%20", ""));
    EXPECT_EQ(text("pathTextField"), folder.path("Käse #1 100%20"));
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::path);
}

TEST_F(EditPolicyWindow, AChosenPathSetsTheTypeEvenWhenItIsTheSameAgain)
{
    const std::string tool = folder.write("tool", "");
    open(test::policyRule({.policyType = rules::PolicyType::suffix, .path = tool, .processName = "any"}));
    choose("browsePathButton", tool);
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::path);
}

TEST_F(EditPolicyWindow, AChosenApplicationGoesIntoTheProgramAndLeavesTheTypeAlone)
{
    std::filesystem::create_directories(folder.path("Paint.app/Contents"));
    open(test::policyRule({.policyType = rules::PolicyType::suffix, .path = "/p", .processName = ""}));
    choose("browseProcessButton", folder.path("Paint.app"));
    EXPECT_EQ(text("processNameTextField"), folder.path("Paint.app/"));
    EXPECT_EQ(text("pathTextField"), "/p");
    EXPECT_EQ(popUp("policyTypePopUp")->currentIndex(), rules::PolicyType::suffix);
    EXPECT_TRUE(showsIcon());
    EXPECT_TRUE(canSave());
}

TEST_F(EditPolicyWindow, ACancelledPanelChangesNothing)
{
    open(test::policyRule(samplePolicyRule));
    answerPanel("browsePathButton", [&](QFileDialog& panel) {
        in<QLineEdit>(panel, "fileNameEdit")->setText(toQt(folder.path()));
        panel.reject();
    });
    EXPECT_EQ(text("pathTextField"), ".jpg");
    answerPanel("browseProcessButton", [](QFileDialog& panel) { panel.reject(); });
    EXPECT_EQ(text("processNameTextField"), "/bin/sh via /usr/sbin/cron");
}

TEST_F(EditPolicyWindow, ThePanelStartsWhereTheFieldPoints)
{
    const std::string tool = folder.write("bin/tool", "");
    const auto startOf = [&](const char* name) {
        std::string start;
        answerPanel(name, [&](QFileDialog& panel) {
            EXPECT_EQ(panel.windowTitle(), QStringLiteral("Use Path"));
            start = fromQt(panel.directory().absolutePath());
        });
        return start;
    };
    const std::string home = fromQt(QDir::homePath());
    open(test::policyRule({.path = folder.path("bin/"), .processName = tool}));
    EXPECT_EQ(startOf("browsePathButton"), folder.path("bin"));
    EXPECT_EQ(startOf("browseProcessButton"), folder.path("bin"));
    for (const char* nowhere : {"any", ""}) {
        type("pathTextField", nowhere);
        type("processNameTextField", nowhere);
        EXPECT_EQ(startOf("browsePathButton"), home);
        EXPECT_EQ(startOf("browseProcessButton"), "/") << "there is no folder /Applications";
    }
}

TEST_F(EditPolicyWindow, OutlivesItsOwnEndWhileThePanelIsOpen)
{
    open(test::policyRule(samplePolicyRule));
    QTimer::singleShot(0, [&] { delete editor.data(); });
    editor->browsePathClicked();
    EXPECT_TRUE(editor.isNull());
}

TEST_F(EditPolicyWindow, OpensWithTheStartOfALongPath)
{
    open(test::policyRule({.path = "/" + std::string(300, 'x'), .processName = "any"}));
    EXPECT_TRUE(field("pathTextField")->hasFocus());
    EXPECT_EQ(field("pathTextField")->cursorPosition(), 0);
    EXPECT_FALSE(field("pathTextField")->hasSelectedText());
}

TEST_F(EditPolicyWindow, IsLight)
{
    open(test::policyRule(samplePolicyRule));
    const QColor corner = editor->grab().toImage().pixelColor(2, 2);
    EXPECT_GT(corner.lightness(), 230);
    EXPECT_EQ(corner.alpha(), 255) << "nothing shines through where windows are not blended";
}

TEST_F(EditPolicyWindow, TheTabKeyFollowsTheEye)
{
    open(test::policyRule(samplePolicyRule));
    QStringList names;
    const QWidget* first = in<QComboBox>(*editor, "policyClassPopUp");
    in<QComboBox>(*editor, "policyClassPopUp")->setFocus();
    do {
        names.append(editor->focusWidget()->objectName());
        QTest::keyClick(editor->focusWidget(), Qt::Key_Tab);
    } while (editor->focusWidget() != first && names.size() < 30);
    EXPECT_EQ(fromQt(names.join(QLatin1Char(' '))),
        "policyClassPopUp pathTextField browsePathButton policyTypePopUp processNameTextField "
        "browseProcessButton "
        "constraintTextField opReadButton opWriteButton opCreateButton opMountButton opExecButton "
        "cancelButton "
        "saveButton");
}

TEST_F(EditPolicyWindow, HasUnsavedChangesWhileItsControlsSayAnythingElseThanAtFirst)
{
    openStored(samplePolicyRule);
    EXPECT_FALSE(editor->hasUnsavedChanges());
    type("pathTextField", "/other");
    EXPECT_TRUE(editor->hasUnsavedChanges());
    editor->showDraft(workflow::draftOf(editor->rule()));
    EXPECT_FALSE(editor->hasUnsavedChanges());
    box("opMountButton")->toggle();
    EXPECT_TRUE(editor->hasUnsavedChanges());
    editor->cancelClicked();
    EXPECT_FALSE(editor->hasUnsavedChanges()) << "the user has dropped them";
}

TEST_F(EditPolicyWindow, HasNoUnsavedChangesForATextThatItsFieldsCannotShowAsItIs)
{
    openStored({.path = "/two\nlines", .processName = "/bin/sh", .operations = 0xFFU});
    EXPECT_FALSE(editor->hasUnsavedChanges());
}

TEST_F(EditPolicyWindow, ShowsADraftAsItIsAlthoughItsPathSuggestsAnotherType)
{
    openStored(samplePolicyRule);
    const workflow::RuleDraft draft{.policyClass = rules::PolicyClass::allow,
        .policyType = rules::PolicyType::suffix,
        .path = "/folder/",
        .processName = "/bin/sh",
        .constraint = std::string(40, 'a'),
        .operations = 9};
    editor->showDraft(draft);
    EXPECT_EQ(editor->draft(), draft);
    EXPECT_EQ(label("constraintTypeTextField")->text(), QStringLiteral("SHA1"));
}

TEST_F(EditPolicyWindow, TheTitleShowsTheNameOfTheProgramAsItIs)
{
    open(test::policyRule({.path = "/p", .processName = "/bin/x[*]"}));
    EXPECT_EQ(editor->windowHandle()->title(), QStringLiteral("x[*]"));
}

TEST_F(EditPolicyWindow, TheConstraintHasAHintAndRoomForAWholeDigest)
{
    open(test::policyRule({.path = "/p", .processName = "any"}));
    const QLineEdit* constraint = field("constraintTextField");
    EXPECT_FALSE(constraint->placeholderText().isEmpty());
    EXPECT_TRUE(QFontInfo(constraint->font()).fixedPitch());
    const QMargins beside = constraint->textMargins();
    EXPECT_GT(constraint->width() - beside.left() - beside.right(),
        constraint->fontMetrics().horizontalAdvance(QString(64, QLatin1Char('0'))));
}

} // namespace quorvane::windows
