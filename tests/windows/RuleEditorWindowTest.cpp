#include "windows/RuleEditorWindow.h"
#include "rules/RuleCodes.h"
#include "tests/windows/EditorWindow.h"

#include <QClipboard>

#include <string>
#include <utility>

#include <sys/stat.h> // mkfifo

namespace quorvane::windows {

namespace {

enum class Kind { policy, watch };

// What the editors of both kinds of rule have in common; each test is run with either.
class RuleEditor : public test::EditorWindow, public testing::WithParamInterface<Kind> {
protected:
    static bool isPolicy() { return GetParam() == Kind::policy; }
    // A rule of the kind under test with those of the fields that it has.
    static rules::RuleRef rule(rules::PolicyRuleFields fields)
    {
        if (isPolicy())
            return test::policyRule(std::move(fields));
        return test::watchRule({.policyType = fields.policyType,
            .path = fields.path,
            .processName = fields.processName,
            .tag = fields.tag,
            .operations = fields.operations,
            .system = fields.system});
    }
    // The line of such a rule, which `words` begin behind its class.
    static std::string line(const std::string& words, const std::string& tag = "mine")
    {
        return (isPolicy() ? "allow " : "watch ") + words + " \"" + tag + '"'
            + (isPolicy() ? " \"\" \"0\"\n" : "\n");
    }
    static std::string logged(const std::string& operation)
    {
        return (isPolicy() ? "-[EditPolicyWindowController " : "-[EditWatchWindowController ") + operation;
    }
    static std::string pathOf(const rules::RuleRef& rule)
    {
        return visitRule(rule, [](const auto& record) { return std::string(record.path().view()); });
    }
    static std::string processOf(const rules::RuleRef& rule)
    {
        return visitRule(rule, [](const auto& record) { return std::string(record.processName().view()); });
    }
    static std::uint32_t operationsOf(const rules::RuleRef& rule)
    {
        return visitRule(rule, [](const auto& record) { return record.operations(); });
    }

    rules::RuleRef openSample()
    {
        const rules::RuleRef sample = rule({.policyType = rules::PolicyType::suffix,
            .path = ".jpg",
            .processName = "/bin/sh",
            .tag = "mine",
            .operations = 2 | 16});
        openStored(sample);
        return sample;
    }
    static constexpr const char* sampleWords = "suffix \".jpg\" \"/bin/sh\" wx";

    QComboBox* typePopUp() const { return popUp(isPolicy() ? "policyTypePopUp" : "watchTypePopUp"); }
    int typeShown() const { return typePopUp()->currentIndex(); }
    QPixmap icon() const { return label("iconImageView")->pixmap(Qt::ReturnByValue); }
    void writeLockImage(QColor color) const
    {
        std::filesystem::create_directories(locations.systemFolder());
        QImage image(32, 32, QImage::Format_RGB32);
        image.fill(color);
        EXPECT_TRUE(image.save(toQt(locations.noticeIconFile())));
    }
    void readUserRules(const std::string& text)
    {
        folder.write("Users/Shared/Quorvane/ann.quorvane.rc", text);
        store.reloadCurrentUserConfiguration();
    }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Kinds, RuleEditor, testing::Values(Kind::policy, Kind::watch),
    [](const auto& kind) { return kind.param == Kind::policy ? "Policy" : "Watch"; });

TEST_P(RuleEditor, OpensOnTheNullTextsOfANewRule)
{
    open(rule({.constraint = std::nullopt}));
    for (const QLineEdit* each : editor->findChildren<QLineEdit*>())
        EXPECT_EQ(each->text(), QString());
    EXPECT_FALSE(canSave());
    EXPECT_TRUE(field("pathTextField")->hasFocus());
    EXPECT_TRUE(button("cancelButton")->isVisible());
    EXPECT_EQ(button("saveButton")->text(), QStringLiteral("Save"));
    EXPECT_FALSE(label("systemImageView")->isVisible());
    EXPECT_EQ(log.lines(),
        std::vector<std::string>{logged(isPolicy() ? "updatePolicyEditor]" : "updateWatchEditor]")
            + " path (null) process (null)"});
}

TEST_P(RuleEditor, CanSaveOnceBothPathAndProgramHoldACharacter)
{
    for (const auto& [empty, other] : {std::pair{"pathTextField", "processNameTextField"},
             std::pair{"processNameTextField", "pathTextField"}}) {
        SCOPED_TRACE(empty);
        open(rule({.path = "", .processName = ""}));
        type(other, "x");
        EXPECT_FALSE(canSave());
        type(empty, " ");
        EXPECT_TRUE(canSave());
        type(empty, "");
        EXPECT_FALSE(canSave());
    }
}

TEST_P(RuleEditor, TheTypeFollowsThePathAsItIsTyped)
{
    open(rule({.path = "/p", .processName = "any"}));
    const struct {
        const char* typed;
        std::int32_t type;
    } cases[] = {{"/Users/", rules::PolicyType::prefix}, {"/Users/a", rules::PolicyType::path},
        {".jpg", rules::PolicyType::suffix}, {".git/", rules::PolicyType::suffix},
        {"", rules::PolicyType::path}};
    for (const auto& c : cases) {
        type("pathTextField", c.typed);
        EXPECT_EQ(typeShown(), c.type) << c.typed;
    }
}

TEST_P(RuleEditor, TheTypeChosenByHandLastsUntilTheNextKeyInThePath)
{
    open(rule({.policyType = rules::PolicyType::suffix, .path = "/p", .processName = "any"}));
    EXPECT_EQ(typeShown(), rules::PolicyType::suffix) << "opening changes nothing";
    typePopUp()->setCurrentIndex(rules::PolicyType::prefix);
    type("processNameTextField", "/bin/sh");
    EXPECT_EQ(typeShown(), rules::PolicyType::prefix);
    QTest::keyClick(field("pathTextField"), Qt::Key_A);
    EXPECT_EQ(typeShown(), rules::PolicyType::path);
}

TEST_P(RuleEditor, EveryTextFieldAndPopUpHasALabel)
{
    openSample();
    QList<QWidget*> unnamed;
    for (QWidget* control : editor->findChildren<QWidget*>()) {
        if (qobject_cast<QLineEdit*>(control) != nullptr || qobject_cast<QComboBox*>(control) != nullptr)
            unnamed.append(control);
    }
    EXPECT_EQ(unnamed.size(), isPolicy() ? 5 : 3);
    for (const QLabel* shown : editor->findChildren<QLabel*>())
        unnamed.removeAll(shown->buddy());
    EXPECT_TRUE(unnamed.isEmpty());
}

TEST_P(RuleEditor, KeepsWhatIsPastedIntoAnyFieldOnOneLine)
{
    openSample();
    QApplication::clipboard()->setText(QStringLiteral("/a\r\nallow path /b\n"));
    for (QLineEdit* each : editor->findChildren<QLineEdit*>()) {
        each->selectAll();
        each->paste();
        EXPECT_EQ(each->text(), QStringLiteral("/aallow path /b")) << fromQt(each->objectName());
    }
}

TEST_P(RuleEditor, ShowsTheLockForAnyProgramAndNothingElse)
{
    writeLockImage(Qt::magenta);
    open(rule({.path = "/p", .processName = "any"}));
    const QImage shown = icon().toImage();
    EXPECT_EQ(shown.pixel(shown.width() / 2, shown.height() / 2), QColor(Qt::magenta).rgb());
    EXPECT_EQ(icon().deviceIndependentSize(), QSizeF(96, 96));
    EXPECT_EQ(label("iconImageView")->accessibleDescription(), QStringLiteral("lock: any program"));
    QTest::keyClick(field("processNameTextField"), Qt::Key_End);
    QTest::keyClick(field("processNameTextField"), Qt::Key_Space);
    EXPECT_EQ(text("processNameTextField"), "any ");
    EXPECT_TRUE(icon().isNull());
    type("processNameTextField", "any");
    EXPECT_FALSE(icon().isNull());
    type("pathTextField", "/q");
    EXPECT_FALSE(icon().isNull()) << "the path has no icon";
}

TEST_P(RuleEditor, ShowsNoLockWhenItsImageIsMissingOrDamaged)
{
    open(rule({.path = "/p", .processName = "any"}));
    EXPECT_TRUE(icon().isNull());
    folder.write("Library/Application Support/Quorvane/lock.png", "no image");
    editor->setApplicationIcon();
    EXPECT_TRUE(icon().isNull());
    std::filesystem::remove(locations.noticeIconFile());
    ASSERT_EQ(mkfifo(locations.noticeIconFile().c_str(), 0600), 0);
    editor->setApplicationIcon();
    EXPECT_TRUE(icon().isNull()) << "a pipe, of which nothing would ever be read";
}

TEST_P(RuleEditor, ShowsTheIconOfAProgramThatExists)
{
    const std::string tool = folder.write("tool", "");
    open(rule({.path = "/p", .processName = tool}));
    EXPECT_FALSE(icon().isNull());
    EXPECT_EQ(label("iconImageView")->accessibleDescription(), QStringLiteral("tool"));
    type("processNameTextField", (tool + "s").c_str());
    EXPECT_TRUE(icon().isNull());
    EXPECT_TRUE(label("iconImageView")->accessibleDescription().isEmpty());
    for (const char* parent : {" via /bin/sh", " via any"}) {
        type("processNameTextField", (tool + parent).c_str());
        EXPECT_FALSE(icon().isNull()) << parent;
    }
}

TEST_P(RuleEditor, SavingKeepsTheRecordClosesAndReloads)
{
    const rules::RuleRef edited = openSample();
    click("saveButton");
    EXPECT_EQ(file(), line(sampleWords));
    EXPECT_EQ(store.ruleAtIndex(0, true), edited);
    EXPECT_EQ(store.totalRules(true), 1U);
    EXPECT_EQ(run.g_dirty, 1);
    EXPECT_EQ(delegate.reloads, 1);
    EXPECT_EQ(log.lines().back(), logged("saveClicked:]"));
    EXPECT_FALSE(editor->isVisible());
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); })) << "deletes itself";
}

TEST_P(RuleEditor, SavingUnchangedControlsChangesNothing)
{
    for (const std::string& text : {std::string("/with\ttab"), std::string("\xEF\xBB\xBF/mark"),
             std::string("/caf\xC3\xA9"), std::string(" /blanks "), std::string(100000, 'p')}) {
        const rules::RuleRef edited = rule({.path = text, .processName = text, .operations = 1});
        openStored(edited);
        click("saveButton");
        EXPECT_EQ(pathOf(edited), text);
        EXPECT_EQ(processOf(edited), text);
    }
}

TEST_P(RuleEditor, SavingWithEveryBoxOffStoresNoOperation)
{
    const rules::RuleRef edited = openSample();
    QTest::mouseClick(box("opWriteButton"), Qt::LeftButton);
    QTest::mouseClick(box("opExecButton"), Qt::LeftButton);
    click("saveButton");
    EXPECT_EQ(operationsOf(edited), 0U);
}

TEST_P(RuleEditor, EachBoxStandsForItsBit)
{
    const rules::RuleRef edited = openSample();
    const struct {
        const char* name;
        std::uint32_t bit;
    } boxes[] = {{"opReadButton", 1}, {"opWriteButton", 2}, {"opCreateButton", 4}, {"opMountButton", 8},
        {"opExecButton", 16}};
    for (const auto& b : boxes) {
        open(edited);
        for (const auto& other : boxes)
            box(other.name)->setChecked(b.bit == other.bit);
        click("saveButton");
        EXPECT_EQ(operationsOf(edited), b.bit) << b.name;
    }
}

TEST_P(RuleEditor, KeepsATypeThatHasNoItem)
{
    openStored(rule({.policyType = rules::unknownCode, .path = "/p", .processName = "any", .operations = 1}));
    EXPECT_EQ(typeShown(), -1);
    click("saveButton");
    EXPECT_EQ(file(), line("err \"/p\" \"any\" r", ""));
}

TEST_P(RuleEditor, SavesWithoutADelegate)
{
    openSample();
    editor->setDelegate(nullptr);
    click("saveButton");
    EXPECT_EQ(file(), line(sampleWords));
    EXPECT_EQ(delegate.reloads, 0);
}

TEST_P(RuleEditor, ClosesWithoutAWordWhenTheFileCannotBeWritten)
{
    openSample();
    std::filesystem::remove_all(locations.sharedFolder());
    click("saveButton");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(delegate.reloads, 1);
}

TEST_P(RuleEditor, ReturnInATextFieldSavesWhenTheRuleIsComplete)
{
    for (const char* name : {"pathTextField", "processNameTextField"}) {
        open(rule({.policyType = rules::PolicyType::path, .path = "", .processName = "", .operations = 1}));
        type("pathTextField", name);
        QTest::keyClick(field(name), Qt::Key_Return);
        EXPECT_TRUE(editor->isVisible()) << name;
        EXPECT_EQ(file().find(name), std::string::npos);
        type("processNameTextField", "any");
        QTest::keyClick(field(name), Qt::Key_Return);
        EXPECT_FALSE(editor->isVisible()) << name;
        EXPECT_NE(file().find(line("path \"" + std::string(name) + "\" \"any\" r", "")), std::string::npos);
    }
}

TEST_P(RuleEditor, CancellingDropsWhatWasTyped)
{
    const auto leave = [&](const std::function<void()>& how, bool isLogged) {
        const rules::RuleRef edited = openSample();
        type("pathTextField", "/typed");
        type("processNameTextField", "/typed");
        how();
        EXPECT_EQ(pathOf(edited), ".jpg");
        EXPECT_EQ(processOf(edited), "/bin/sh");
        EXPECT_EQ(run.g_dirty, 0);
        EXPECT_EQ(delegate.reloads, 0);
        EXPECT_EQ(log.lines().back() == logged("cancelClicked:]"), isLogged);
        EXPECT_TRUE(QTest::qWaitFor([&] { return editor.isNull(); }));
    };
    leave([&] { editor->close(); }, false);
    leave([&] { click("cancelButton"); }, true);
    leave([&] { QTest::keyClick(field("pathTextField"), Qt::Key_Escape); }, true);
}

TEST_P(RuleEditor, ShowsASystemRuleReadOnly)
{
    open(rule({.path = "/p", .processName = "any"}));
    const QRect saveFrame = button("saveButton")->geometry();
    open(rule({.path = "/p", .processName = "any", .system = true}));

    EXPECT_FALSE(button("saveButton")->isVisible());
    EXPECT_EQ(button("cancelButton")->geometry(), saveFrame);
    EXPECT_TRUE(button("cancelButton")->hasFocus());
    for (const char* name : {"pathTextField", "processNameTextField"})
        EXPECT_TRUE(field(name)->isReadOnly()) << name;
    EXPECT_FALSE(typePopUp()->isEnabled());
    for (const char* name : {"browsePathButton", "browseProcessButton", "opReadButton", "opWriteButton",
             "opCreateButton", "opMountButton", "opExecButton"})
        EXPECT_FALSE(in<QWidget>(*editor, name)->isEnabled()) << name;
    EXPECT_TRUE(label("systemLabel")->isVisible());
    EXPECT_TRUE(label("systemImageView")->isVisible());
    const QPixmap mark = label("systemImageView")->pixmap(Qt::ReturnByValue);
    EXPECT_EQ(mark.deviceIndependentSize(), QSizeF(12, 12));
    EXPECT_NEAR(qAlpha(mark.toImage().pixel(6, 3)), 204, 1) << "opacity 0.8";
}

TEST_P(RuleEditor, SavingASystemRuleIsACancel)
{
    open(rule({.path = "/p", .processName = "any", .system = true}));
    editor->saveClicked();
    EXPECT_EQ(run.g_dirty, 0);
    EXPECT_EQ(delegate.reloads, 0);
    EXPECT_EQ(store.totalRules(true), 0U);
    EXPECT_FALSE(std::filesystem::exists(locations.userRulesFile()));
    const auto lines = log.lines();
    EXPECT_EQ(lines.at(lines.size() - 2), logged("saveClicked:]"));
    EXPECT_EQ(lines.back(), logged("cancelClicked:]"));
    EXPECT_FALSE(editor->isVisible());
}

TEST_P(RuleEditor, ReturnClosesTheEditorOfASystemRule)
{
    open(rule({.path = "/p", .processName = "any", .system = true}));
    field("pathTextField")->setFocus();
    QTest::keyClick(field("pathTextField"), Qt::Key_Return);
    EXPECT_FALSE(editor->isVisible());
    EXPECT_EQ(log.lines().back(), logged("cancelClicked:]"));
}

TEST_P(RuleEditor, TwoEditorsOfOneRuleLeaveOneRuleAndTheLastSaveWins)
{
    const rules::RuleRef edited = openSample();
    const QPointer<RuleEditorWindow> first = editor;
    open(edited);
    EXPECT_TRUE(first->isVisible());
    type("pathTextField", "/second");
    click("saveButton");
    EXPECT_EQ(file(), line("path \"/second\" \"/bin/sh\" wx"));
    editor = first;
    type("pathTextField", "/first");
    click("saveButton");
    EXPECT_EQ(file(), line("path \"/first\" \"/bin/sh\" wx"));
    EXPECT_EQ(store.totalRules(true), 1U);
}

TEST_P(RuleEditor, SavingBringsBackARuleThatWasDeletedMeanwhile)
{
    const rules::RuleRef edited = openSample();
    store.apply(workflow::deletionOf(store, {edited}));
    ASSERT_EQ(store.totalRules(true), 0U);
    click("saveButton");
    EXPECT_EQ(store.totalRules(true), 1U);
    EXPECT_EQ(file(), line(sampleWords));
}

TEST_P(RuleEditor, SavingReplacesTheRuleThatTheStoreHasReadAnewMeanwhile)
{
    readUserRules(line("path \"/p\" \"any\" r"));
    open(store.ruleAtIndex(0, true));
    store.reloadCurrentUserConfiguration();
    type("pathTextField", "/q");
    click("saveButton");
    EXPECT_EQ(file(), line("path \"/q\" \"any\" r"));
}

TEST_P(RuleEditor, AChosenFolderGetsASlashAndKeepsItsSpaces)
{
    std::filesystem::create_directories(folder.path("My  Photos"));
    open(rule({.policyType = rules::PolicyType::path, .path = "", .processName = ""}));
    choose("browsePathButton", folder.path("My  Photos"));
    EXPECT_EQ(text("pathTextField"), folder.path("My  Photos/"));
    EXPECT_EQ(typeShown(), rules::PolicyType::prefix);
    EXPECT_EQ(text("processNameTextField"), "");
    EXPECT_FALSE(canSave());
    choose("browseProcessButton", folder.path("My  Photos"));
    EXPECT_EQ(text("processNameTextField"), folder.path("My  Photos/"));
    EXPECT_TRUE(canSave());
}

TEST_P(RuleEditor, AChosenNameComesAsItIs)
{
    const std::string odd = folder.write("Käse #1 100%20", "");
    open(rule({.path = "", .processName = ""}));
    choose("browsePathButton", odd);
    EXPECT_EQ(text("pathTextField"), odd);
    EXPECT_EQ(typeShown(), rules::PolicyType::path);
    choose("browseProcessButton", odd);
    EXPECT_EQ(text("processNameTextField"), odd);
}

TEST_P(RuleEditor, AChosenPathSetsTheTypeEvenWhenItIsTheSameAgain)
{
    const std::string tool = folder.write("tool", "");
    open(rule({.policyType = rules::PolicyType::suffix, .path = tool, .processName = "any"}));
    choose("browsePathButton", tool);
    EXPECT_EQ(typeShown(), rules::PolicyType::path);
}

TEST_P(RuleEditor, AChosenApplicationShowsItsIconEvenWhenItsPathStoodThereBefore)
{
    const std::string late = folder.path("late");
    open(rule({.path = "/p", .processName = late}));
    EXPECT_TRUE(icon().isNull());
    folder.write("late", "");
    choose("browseProcessButton", late);
    EXPECT_FALSE(icon().isNull());
}

TEST_P(RuleEditor, AChosenApplicationGoesIntoTheProgramAndLeavesTheTypeAlone)
{
    std::filesystem::create_directories(folder.path("Paint.app/Contents"));
    open(rule({.policyType = rules::PolicyType::suffix, .path = "/p", .processName = ""}));
    choose("browseProcessButton", folder.path("Paint.app"));
    EXPECT_EQ(text("processNameTextField"), folder.path("Paint.app/"));
    EXPECT_EQ(text("pathTextField"), "/p");
    EXPECT_EQ(typeShown(), rules::PolicyType::suffix);
    EXPECT_FALSE(icon().isNull());
    EXPECT_TRUE(canSave());
}

TEST_P(RuleEditor, ACancelledPanelChangesNothing)
{
    openSample();
    for (const char* name : {"browsePathButton", "browseProcessButton"}) {
        answerPanel(name, [&](QFileDialog& panel) {
            in<QLineEdit>(panel, "fileNameEdit")->setText(toQt(folder.path()));
            panel.reject();
        });
        EXPECT_EQ(text("pathTextField"), ".jpg");
        EXPECT_EQ(text("processNameTextField"), "/bin/sh");
    }
}

TEST_P(RuleEditor, ThePanelStartsWhereTheFieldPoints)
{
    const std::string file = folder.write("files/file", "");
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
    open(rule({.path = file, .processName = tool}));
    EXPECT_EQ(startOf("browsePathButton"), folder.path("files"));
    EXPECT_EQ(startOf("browseProcessButton"), folder.path("bin"));
    for (const char* nowhere : {"any", ""}) {
        type("pathTextField", nowhere);
        type("processNameTextField", nowhere);
        EXPECT_EQ(startOf("browsePathButton"), home);
        EXPECT_EQ(startOf("browseProcessButton"), "/") << "there is no folder /Applications";
    }
}

TEST_P(RuleEditor, OutlivesItsOwnEndWhileAPanelIsOpen)
{
    for (const auto& browse :
        {&RuleEditorWindow::browsePathClicked, &RuleEditorWindow::browseApplicationClicked}) {
        openSample();
        QTimer::singleShot(0, [&] { delete editor.data(); });
        (editor->*browse)();
        EXPECT_TRUE(editor.isNull());
    }
}

TEST_P(RuleEditor, OpensWithTheStartOfALongText)
{
    const std::string longText = "/" + std::string(300, 'x');
    open(rule({.path = longText, .processName = longText}));
    EXPECT_TRUE(field("pathTextField")->hasFocus());
    for (const char* name : {"pathTextField", "processNameTextField"}) {
        EXPECT_EQ(field(name)->cursorPosition(), 0) << name;
        EXPECT_FALSE(field(name)->hasSelectedText()) << name;
    }
}

TEST_P(RuleEditor, IsLight)
{
    openSample();
    const QColor corner = editor->grab().toImage().pixelColor(2, 2);
    EXPECT_GT(corner.lightness(), 230);
    EXPECT_EQ(corner.alpha(), 255) << "nothing shines through where windows are not blended";
}

TEST_P(RuleEditor, TheTabKeyFollowsTheEye)
{
    openSample();
    auto* first = isPolicy() ? in<QWidget>(*editor, "policyClassPopUp") : field("pathTextField");
    first->setFocus();
    QStringList names;
    do {
        names.append(editor->focusWidget()->objectName());
        QTest::keyClick(editor->focusWidget(), Qt::Key_Tab);
    } while (editor->focusWidget() != first && names.size() < 30);
    const std::string texts = isPolicy()
        ? "policyClassPopUp pathTextField browsePathButton policyTypePopUp processNameTextField "
          "browseProcessButton constraintTextField "
        : "pathTextField browsePathButton watchTypePopUp processNameTextField browseProcessButton ";
    EXPECT_EQ(fromQt(names.join(QLatin1Char(' '))),
        texts
            + "opReadButton opWriteButton opCreateButton opMountButton opExecButton cancelButton saveButton");
}

TEST_P(RuleEditor, HasUnsavedChangesWhileItsControlsSayAnythingElseThanAtFirst)
{
    const rules::RuleRef edited = openSample();
    const auto expectAChangeBy = [&](const std::function<void()>& change) {
        EXPECT_FALSE(editor->hasUnsavedChanges());
        change();
        EXPECT_TRUE(editor->hasUnsavedChanges());
        editor->showDraft(workflow::draftOf(edited));
    };
    expectAChangeBy([&] { type("pathTextField", ".png"); });
    expectAChangeBy([&] { type("processNameTextField", "/bin/vi"); });
    expectAChangeBy([&] { typePopUp()->setCurrentIndex(rules::PolicyType::path); });
    expectAChangeBy([&] { box("opMountButton")->toggle(); });
    type("pathTextField", "/other");
    editor->cancelClicked();
    EXPECT_FALSE(editor->hasUnsavedChanges()) << "the user has dropped them";
}

TEST_P(RuleEditor, HasNoUnsavedChangesForATextThatItsFieldsCannotShowAsItIs)
{
    openStored(rule({.path = "/two\nlines", .processName = "/bin/two\nlines", .operations = 0xFFU}));
    EXPECT_FALSE(editor->hasUnsavedChanges());
}

TEST_P(RuleEditor, ShowsADraftAsItIsAlthoughItsPathSuggestsAnotherType)
{
    openSample();
    workflow::RuleDraft draft{.policyType = rules::PolicyType::suffix,
        .path = "/folder/",
        .processName = "/bin/ls",
        .operations = 9};
    if (isPolicy()) {
        draft.policyClass = rules::PolicyClass::deny;
        draft.constraint = std::string(40, 'a');
    }
    editor->showDraft(draft);
    EXPECT_EQ(editor->draft(), draft);
}

} // namespace quorvane::windows
