#include "app/QVPreferencesWindow.h"

#include "history/Journal.h"
#include "platform/FilePermissions.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/FakePrivilegedCommand.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestDocument.h"
#include "windows/Shades.h"
#include "windows/WindowLook.h"
#include "workflow/PreferencesFile.h"
#include "workflow/PreferencesHistory.h"
#include "workflow/RunState.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace quorvane::windows {

namespace {

const std::vector<const char*> boxNames = {"createRulesCheckBox", "restrictRulesCheckBox",
    "allowSignedExecutionCheckBox", "whitelistPreloadedCheckBox", "monitorWebcamCheckbox",
    "monitorStartupCheckBox", "monitorExecutionCheckBox", "monitorAttachCheckBox", "promptsLockedCheckBox",
    "requireTouchBarCheckBox", "strictSystemRulesCheckBox", "allowRemoteAdministrationCheckBox",
    "requireAuthenticationCheckBox"};

class PreferencesWindow : public testing::Test {
protected:
    PreferencesWindow()
    {
        std::filesystem::create_directories(m_locations.sharedFolder());
        platform::setPermissions(m_locations.sharedFolder(), 0775);
    }
    ~PreferencesWindow() override { delete m_window; }

    void writeList(const std::string& keys)
    {
        m_folder.write("Users/Shared/Quorvane/vantreal.Quorvane.preferences.plist",
            "<plist version=\"1.0\"><dict>" + keys + "</dict></plist>");
    }

    void open()
    {
        m_window = new app::QVPreferencesWindow(
            m_locations, m_application, m_run, m_privilegedCommand, m_history, m_log.log());
        m_window->windowDidLoad();
        m_window->show();
    }

    template <class Widget> Widget& widget(const char* name) const
    {
        auto* found = m_window->findChild<Widget*>(QLatin1String(name));
        if (found == nullptr)
            throw std::runtime_error(name);
        return *found;
    }
    QCheckBox& box(const char* name) const { return widget<QCheckBox>(name); }
    QComboBox& detail() const { return widget<QComboBox>("levelOfDetailPopUpButton"); }
    QPushButton& saveButton() const { return widget<QPushButton>("saveButton"); }

    // By a click, as a person changes it.
    void turn(const char* name) const { box(name).click(); }

    void save()
    {
        QTest::mouseClick(&saveButton(), Qt::LeftButton);
        EXPECT_TRUE(isClosed());
    }

    bool isClosed() const
    {
        return QTest::qWaitFor([this] { return m_window.isNull(); });
    }

    std::vector<std::string> boxesThat(bool (QCheckBox::*ask)() const) const
    {
        std::vector<std::string> names;
        for (const char* name : boxNames) {
            if ((box(name).*ask)())
                names.emplace_back(name);
        }
        return names;
    }
    std::vector<std::string> boxesOn() const { return boxesThat(&QCheckBox::isChecked); }
    std::vector<std::string> boxesEnabled() const
    {
        std::vector<std::string> names;
        for (const char* name : boxNames) {
            if (box(name).isEnabled())
                names.emplace_back(name);
        }
        return names;
    }

    std::string file() const { return m_locations.preferencesFile(); }
    std::string fileText() const { return test::TemporaryFolder::contents(file()); }
    platform::PropertyList saved() const { return workflow::readPreferences(file()); }

    bool hasLogged(const std::string& line)
    {
        const auto lines = m_log.lines();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    test::TemporaryFolder m_folder;
    platform::Locations m_locations{m_folder.path(), "nobody"};
    test::CapturedLog m_log;
    test::FakeApplication m_application;
    test::FakePrivilegedCommand m_privilegedCommand;
    workflow::RunState m_run;
    std::unique_ptr<rules::RuleManager> m_store
        = std::make_unique<rules::RuleManager>(m_locations, test::silentLog());
    test::TestDocument m_document{*m_store, m_run};
    workflow::PreferencesHistory m_history{
        m_locations, m_document, "test", {m_application, m_privilegedCommand, m_run}, test::silentLog()};
    QPointer<app::QVPreferencesWindow> m_window;
};

const std::vector<std::string> onByDefault = {"whitelistPreloadedCheckBox", "monitorWebcamCheckbox",
    "monitorStartupCheckBox", "monitorExecutionCheckBox", "monitorAttachCheckBox", "promptsLockedCheckBox"};

} // namespace

TEST_F(PreferencesWindow, ShowsTheDefaultsWithoutAPropertyList)
{
    open();
    EXPECT_TRUE(m_window->isVisible());
    EXPECT_EQ(boxesOn(), onByDefault);
    EXPECT_EQ(detail().currentData().toInt(), 0);
    EXPECT_EQ(saveButton().text(), QStringLiteral("Save"));
}

TEST_F(PreferencesWindow, ShowsTheDefaultsForADamagedPropertyList)
{
    m_folder.write("Users/Shared/Quorvane/vantreal.Quorvane.preferences.plist", "<plist><dict><key>");
    open();
    EXPECT_EQ(boxesOn(), onByDefault);
}

TEST_F(PreferencesWindow, SavesAllFourteenKeysWithoutAPropertyList)
{
    open();
    save();
    EXPECT_EQ(saved().description(),
        R"({"access.user.detail" = 0; "access.user.restrict" = 0; "access.user.create" = 0; )"
        R"("filter.exec.allow.signed" = 0; "policy.global.user" = 1; "policy.global.webcam" = 1; )"
        R"("policy.global.startup" = 1; "policy.global.exec" = 1; "policy.global.attach" = 1; )"
        R"("ui.prompts.while_locked" = 1; "ui.prompts.oob" = 2; "policy.global.paranoid" = 2; )"
        R"("ui.prompts.remote" = 2; "ui.prompts.authenticate" = 2})");
    EXPECT_EQ(platform::permissionsOf(file()), 0775U);
    EXPECT_EQ(m_run.g_dirty, 1);
    EXPECT_TRUE(hasLogged("writing to file: " + saved().description()));
}

TEST_F(PreferencesWindow, EachControlIsSavedUnderItsKeyAndNoOther)
{
    const struct {
        const char* name;
        const char* key;
        std::int32_t before;
        std::int32_t after;
    } cases[] = {
        {"allowSignedExecutionCheckBox", "filter.exec.allow.signed", 0, 1},
        {"whitelistPreloadedCheckBox", "policy.global.user", 1, 2},
        {"monitorWebcamCheckbox", "policy.global.webcam", 1, 2},
        {"monitorStartupCheckBox", "policy.global.startup", 1, 2},
        {"monitorExecutionCheckBox", "policy.global.exec", 1, 2},
        {"monitorAttachCheckBox", "policy.global.attach", 1, 2},
        {"promptsLockedCheckBox", "ui.prompts.while_locked", 1, 2},
        {"requireTouchBarCheckBox", "ui.prompts.oob", 2, 1},
        {"strictSystemRulesCheckBox", "policy.global.paranoid", 2, 1},
        {"allowRemoteAdministrationCheckBox", "ui.prompts.remote", 2, 1},
        {"requireAuthenticationCheckBox", "ui.prompts.authenticate", 2, 1},
        {"createRulesCheckBox", "access.user.create", 0, 1},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(file());
        open();
        save();
        platform::PropertyList expected = saved();
        EXPECT_EQ(expected.integerForKey(c.key), c.before) << c.name;

        open();
        turn(c.name);
        save();

        expected.setInteger(c.key, c.after);
        EXPECT_EQ(saved().description(), expected.description()) << c.name;
    }
}

TEST_F(PreferencesWindow, RestrictionIsSavedUnderItsKey)
{
    platform::setPermissions(m_locations.sharedFolder(), 0777);
    open();
    turn("restrictRulesCheckBox");
    save();
    EXPECT_TRUE(saved().boolForKey("access.user.restrict"));
    EXPECT_TRUE(saved().boolForKey("access.user.create"));
    EXPECT_TRUE(m_privilegedCommand.commands.empty());
}

TEST_F(PreferencesWindow, ZeroInAThreeStateKeyIsShownOnAndSavedAs1)
{
    writeList("<key>policy.global.webcam</key><integer>0</integer>");
    open();
    EXPECT_TRUE(box("monitorWebcamCheckbox").isChecked());
    save();
    EXPECT_EQ(saved().integerForKey("policy.global.webcam"), 1);
}

TEST_F(PreferencesWindow, Shows2AsOff)
{
    writeList(
        "<key>ui.prompts.oob</key><integer>2</integer><key>policy.global.webcam</key><integer>2</integer>");
    open();
    EXPECT_FALSE(box("requireTouchBarCheckBox").isChecked());
    EXPECT_FALSE(box("monitorWebcamCheckbox").isChecked());
}

TEST_F(PreferencesWindow, LevelOfDetailIsChosenByItsTag)
{
    writeList("<key>access.user.detail</key><integer>1</integer>");
    open();
    EXPECT_EQ(detail().currentData().toInt(), 1);
    EXPECT_EQ(detail().count(), 3);
    detail().setCurrentIndex(2);
    save();
    EXPECT_EQ(saved().integerForKey("access.user.detail"), 2);
}

TEST_F(PreferencesWindow, UnknownLevelOfDetailIsShownAndKept)
{
    writeList("<key>access.user.detail</key><integer>-7</integer>");
    open();
    EXPECT_EQ(detail().currentData().toInt(), -7);
    EXPECT_EQ(detail().currentText(), QStringLiteral("Other (-7)"));
    save();
    EXPECT_EQ(saved().integerForKey("access.user.detail"), -7);
}

TEST_F(PreferencesWindow, UnknownKeysSurviveASave)
{
    writeList("<key>security.hashing.enforce</key><integer>-1</integer>"
              "<key>other</key><array><real>0.5</real><date>2020-01-01T00:00:00Z</date></array>");
    open();
    save();
    EXPECT_EQ(saved().description().substr(0, 63),
        R"({"security.hashing.enforce" = -1; "other" = (0.5, 599529600); ")");
}

TEST_F(PreferencesWindow, KeysThatOthersWroteSinceItOpenedAreKept)
{
    writeList("<key>old</key><true/>");
    platform::setPermissions(m_locations.sharedFolder(), 0775);
    open();
    turn("createRulesCheckBox");
    writeList("<key>new</key><integer>5</integer>");
    m_privilegedCommand.meanwhile = [this] { writeList("<key>newer</key><integer>6</integer>"); };
    save();
    EXPECT_EQ(saved().description().substr(0, 36), R"({"newer" = 6; "access.user.detail" =)");
}

TEST_F(PreferencesWindow, CreationOfRulesIsTheFoldersPermissionWhateverTheKeySays)
{
    writeList("<key>access.user.create</key><false/><key>access.user.restrict</key><true/>");
    platform::setPermissions(m_locations.sharedFolder(), 0777);
    open();
    EXPECT_TRUE(box("createRulesCheckBox").isChecked());
    EXPECT_TRUE(box("restrictRulesCheckBox").isEnabled());
    EXPECT_TRUE(hasLogged("posix mask for rules folder is 511"));
}

TEST_F(PreferencesWindow, RestrictionCanBeChangedOnlyWhileUsersMayCreateRulesAndKeepsItsState)
{
    writeList("<key>access.user.restrict</key><true/>");
    open();
    QCheckBox& restrict = box("restrictRulesCheckBox");
    EXPECT_TRUE(restrict.isChecked());
    EXPECT_FALSE(restrict.isEnabled());
    turn("createRulesCheckBox");
    EXPECT_TRUE(restrict.isEnabled());
    EXPECT_TRUE(restrict.isChecked());
    turn("createRulesCheckBox");
    EXPECT_FALSE(restrict.isEnabled());
    EXPECT_TRUE(restrict.isChecked());
}

TEST_F(PreferencesWindow, FolderIsOpenedToUsersWithOnePrompt)
{
    open();
    turn("createRulesCheckBox");
    save();
    const std::string command = "/bin/chmod 777 '" + m_folder.path("Users/Shared/Quorvane") + "'";
    EXPECT_EQ(m_privilegedCommand.commands, std::vector<std::string>{command});
    EXPECT_TRUE(
        hasLogged("script source: do shell script \"" + command + "\" with administrator privileges"));
    EXPECT_TRUE(hasLogged("")) << "the outcome";
    EXPECT_TRUE(saved().boolForKey("access.user.create"));
}

TEST_F(PreferencesWindow, FolderIsClosedToUsersWithOnePrompt)
{
    platform::setPermissions(m_locations.sharedFolder(), 0777);
    open();
    turn("createRulesCheckBox");
    save();
    EXPECT_EQ(m_privilegedCommand.commands,
        std::vector<std::string>{"/bin/chmod 775 '" + m_folder.path("Users/Shared/Quorvane") + "'"});
    EXPECT_FALSE(saved().boolForKey("access.user.create"));
}

TEST_F(PreferencesWindow, UnchangedFolderPermissionAsksNobody)
{
    for (const std::uint32_t permissions : {0775U, 0777U}) {
        platform::setPermissions(m_locations.sharedFolder(), permissions);
        open();
        turn("createRulesCheckBox");
        turn("createRulesCheckBox");
        save();
        EXPECT_TRUE(m_privilegedCommand.commands.empty());
    }
}

TEST_F(PreferencesWindow, RefusedFolderPermissionIsOnlyLoggedAndTheRestIsSaved)
{
    m_privilegedCommand.answer = "pkexec: status 126: dismissed";
    open();
    turn("createRulesCheckBox");
    turn("monitorWebcamCheckbox");
    save();
    EXPECT_TRUE(hasLogged("pkexec: status 126: dismissed"));
    EXPECT_EQ(saved().integerForKey("policy.global.webcam"), 2);
    EXPECT_TRUE(m_application.notices.empty());
}

TEST_F(PreferencesWindow, WhatItFindsAndWhatItSavesAreVersionsOfTheHistory)
{
    writeList("<key>a</key><true/>");
    open();
    writeList("<key>a</key><false/>"); // another program meanwhile
    save();
    const auto versions = m_history.openJournal()->versions();
    ASSERT_EQ(versions.size(), 3U);
    EXPECT_EQ(versions[0].action, "Save Preferences");
    EXPECT_EQ(versions[0].bytes, fileText().size());
    EXPECT_EQ(versions[1].kind, history::VersionKind::foreign);
    EXPECT_EQ(versions[2].kind, history::VersionKind::foreign);
}

TEST_F(PreferencesWindow, FailedWriteClosesWithoutANoticeAndPassesTheReasonOn)
{
    std::filesystem::remove_all(m_locations.sharedFolder());
    open();
    QStringList told;
    QObject::connect(
        m_window, &app::QVPreferencesWindow::saved, [&](const QString& failure) { told += failure; });
    save();
    ASSERT_EQ(told.size(), 1);
    EXPECT_EQ(told[0].toStdString(),
        "Failed to save the preferences to '" + file() + "': No such file or directory");
    EXPECT_FALSE(std::filesystem::exists(file()));
    EXPECT_TRUE(hasLogged("failed to write preferences: " + file()));
    EXPECT_TRUE(m_application.notices.empty());
}

TEST_F(PreferencesWindow, SuccessfulWriteTellsOfNoFailure)
{
    open();
    QStringList told;
    QObject::connect(
        m_window, &app::QVPreferencesWindow::saved, [&](const QString& failure) { told += failure; });
    save();
    EXPECT_EQ(told, QStringList{QString()});
}

TEST_F(PreferencesWindow, SaysWhenItOpensWhySettingsCannotBeSaved)
{
    std::filesystem::create_directory(file());
    open();
    const auto& label = widget<QLabel>("warningLabel");
    EXPECT_TRUE(label.isVisible());
    EXPECT_EQ(label.text().toStdString(),
        "These settings cannot be saved: what stands in its place is no regular file.");
    EXPECT_EQ(label.toolTip().toStdString(), file());
    EXPECT_TRUE(box("monitorWebcamCheckbox").isEnabled());
    m_window->close();

    std::filesystem::remove(file());
    for (const bool isAdmin : {true, false}) {
        m_application.isAdmin = isAdmin;
        open();
        EXPECT_FALSE(widget<QLabel>("warningLabel").isVisible());
        m_window->close();
    }
}

TEST_F(PreferencesWindow, SaysWhenItOpensThatItShowsTheDefaultsForAListItCannotRead)
{
    std::ofstream(file()) << "<plist>";
    std::filesystem::resize_file(file(), (16U << 20U) + 1);
    open();
    const auto& label = widget<QLabel>("warningLabel");
    EXPECT_TRUE(label.isVisible());
    EXPECT_EQ(label.text().toStdString(),
        "The file of the settings cannot be read: it is larger than 16 MiB. Shown are the defaults; saving "
        "keeps "
        "the file under another name.");
    save();
    EXPECT_EQ(std::filesystem::file_size(file() + ".unread"), (16U << 20U) + 1);
}

TEST_F(PreferencesWindow, AdministratorAuthenticatesOnceEachTimeItOpens)
{
    open();
    EXPECT_EQ(m_application.authentications, 1);
    save();
    open();
    EXPECT_EQ(m_application.authentications, 2);
    EXPECT_EQ(boxesEnabled().size(), boxNames.size() - 1) << "all but the restriction";
    EXPECT_TRUE(detail().isEnabled());
    EXPECT_FALSE(widget<QLabel>("readOnlyLabel").isVisible());
    EXPECT_FALSE(widget<QLabel>("lockImage").isVisible());
}

TEST_F(PreferencesWindow, WithoutAdministratorOrAuthenticationIsReadOnly)
{
    writeList("<key>policy.global.webcam</key><integer>2</integer>");
    platform::setPermissions(m_locations.sharedFolder(), 0777);
    const std::string before = fileText();
    for (const bool isAdmin : {false, true}) {
        m_application.isAdmin = isAdmin;
        m_application.authenticates = !isAdmin;
        open();
        EXPECT_EQ(m_application.authentications, isAdmin ? 1 : 0) << "others are not asked";
        EXPECT_EQ(boxesEnabled(), std::vector<std::string>{"strictSystemRulesCheckBox"});
        EXPECT_FALSE(detail().isEnabled());
        EXPECT_EQ(saveButton().text(), QStringLiteral("  OK  "));
        EXPECT_TRUE(saveButton().isEnabled());
        EXPECT_EQ(m_window->focusWidget(), &saveButton());
        EXPECT_FALSE(widget<QPushButton>("cancelButton").isVisible());
        EXPECT_TRUE(widget<QLabel>("lockImage").isVisible());
        EXPECT_FALSE(box("monitorWebcamCheckbox").isChecked());
        EXPECT_TRUE(widget<QLabel>("readOnlyLabel").isVisible());
        EXPECT_TRUE(m_application.notices.empty());
        save();
        EXPECT_EQ(fileText(), before);
        EXPECT_EQ(m_run.g_dirty, 0);
    }
}

TEST_F(PreferencesWindow, StrictSystemRulesStayClickableWhenReadOnlyAndNothingIsSaved)
{
    m_application.isAdmin = false;
    open();
    QTest::mouseClick(&box("strictSystemRulesCheckBox"), Qt::LeftButton, {}, QPoint(8, 8));
    EXPECT_TRUE(box("strictSystemRulesCheckBox").isChecked());
    save();
    EXPECT_FALSE(std::filesystem::exists(file()));
    EXPECT_EQ(m_run.g_dirty, 0);
}

TEST_F(PreferencesWindow, WhoIsNoAdministratorAnyMoreSavesNothing)
{
    open();
    turn("createRulesCheckBox");
    m_application.isAdmin = false;
    save();
    EXPECT_FALSE(std::filesystem::exists(file()));
    EXPECT_TRUE(m_privilegedCommand.commands.empty());
    EXPECT_EQ(m_run.g_dirty, 0);
}

TEST_F(PreferencesWindow, WhoBecomesAnAdministratorLaterSavesNothing)
{
    m_application.isAdmin = false;
    open();
    m_application.isAdmin = true;
    save();
    EXPECT_FALSE(std::filesystem::exists(file()));
    EXPECT_EQ(m_run.g_dirty, 0);
}

TEST_F(PreferencesWindow, EscapeAndCancelCloseWithoutSaving)
{
    for (const bool byKey : {true, false}) {
        open();
        turn("monitorWebcamCheckbox");
        turn("createRulesCheckBox");
        if (byKey)
            QTest::keyClick(m_window, Qt::Key_Escape);
        else
            QTest::mouseClick(&widget<QPushButton>("cancelButton"), Qt::LeftButton);
        EXPECT_TRUE(isClosed());
        EXPECT_FALSE(std::filesystem::exists(file()));
        EXPECT_TRUE(m_privilegedCommand.commands.empty());
        EXPECT_EQ(m_log.lines().back(), "-[QVPreferencesWindow windowWillClose:] exiting");
    }
}

TEST_F(PreferencesWindow, ReturnSaves)
{
    open();
    QTest::keyClick(m_window, Qt::Key_Return);
    EXPECT_TRUE(isClosed());
    EXPECT_TRUE(std::filesystem::exists(file()));
}

TEST_F(PreferencesWindow, ClosingEndsTheProgramOnlyWhenItWasStartedForThePreferences)
{
    for (const bool startedForPreferences : {false, true}) {
        m_application.startedForPreferences = startedForPreferences;
        open();
        EXPECT_EQ(m_application.terminations, 0);
        m_window->close();
        EXPECT_TRUE(isClosed());
        EXPECT_EQ(m_application.terminations, startedForPreferences ? 1 : 0);
        EXPECT_EQ(m_log.lines().back(), "-[QVPreferencesWindow windowWillClose:] exiting");
    }
}

TEST_F(PreferencesWindow, StaysLightOnADarkDesktop)
{
    setAppearance(*qApp, {.isDark = true});
    open();
    EXPECT_EQ(m_window->palette().color(QPalette::Base), shades::table.in({}));
    setAppearance(*qApp, {});
}

TEST_F(PreferencesWindow, FitsASmallScreen)
{
    open();
    EXPECT_LE(m_window->width(), 1240);
    EXPECT_LE(m_window->height(), 740);
}

TEST_F(PreferencesWindow, SaysOfEverySwitchWhatItDoes)
{
    open();
    for (const char* name : boxNames) {
        EXPECT_FALSE(box(name).text().isEmpty()) << name;
        EXPECT_FALSE(box(name).accessibleDescription().isEmpty()) << name;
    }
    EXPECT_FALSE(detail().accessibleDescription().isEmpty());
}

} // namespace quorvane::windows
