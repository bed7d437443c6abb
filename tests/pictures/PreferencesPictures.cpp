#include "app/QVPreferencesWindow.h"
#include "platform/FilePermissions.h"
#include "tests/pictures/KeptPicture.h"
#include "tests/pictures/KeptWords.h"
#include "tests/support/FakeApplication.h"
#include "tests/support/FakePrivilegedCommand.h"
#include "tests/support/TestDocument.h"
#include "workflow/PreferencesHistory.h"
#include "workflow/RunState.h"

#include <QSettings>
#include <QTest>

#include <filesystem>

namespace quorvane::test {

namespace {

class PreferencesPictures : public testing::Test {
protected:
    PreferencesPictures()
    {
        QSettings().clear();
        std::filesystem::create_directories(locations.sharedFolder());
        platform::setPermissions(locations.sharedFolder(), 0775);
    }

    // As somebody sees the window who is an administrator, or is not.
    QImage pictureFor(bool isAdmin)
    {
        application.isAdmin = isAdmin;
        app::QVPreferencesWindow window(locations, application, run, privilegedCommand, history, silentLog());
        window.setAttribute(Qt::WA_DeleteOnClose, false);
        window.windowDidLoad();
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        words = wordsOf(window);
        return pictureOf(window);
    }

    std::string words; // of the window whose picture was taken
    TemporaryFolder folder;
    platform::Locations locations{folder.path(), "nobody"};
    FakeApplication application;
    FakePrivilegedCommand privilegedCommand;
    workflow::RunState run;
    rules::RuleManager store{locations, silentLog()};
    TestDocument document{store, run};
    workflow::PreferencesHistory history{
        locations, document, "test", {application, privilegedCommand, run}, silentLog()};
};

} // namespace

TEST_F(PreferencesPictures, ShowTheWindowOfAnAdministrator)
{
    EXPECT_TRUE(looksAsKept("preferences", pictureFor(true)));
    EXPECT_TRUE(readsAsKept("preferences", words));
}

TEST_F(PreferencesPictures, ShowTheWindowOfWhoMayOnlyRead)
{
    EXPECT_TRUE(looksAsKept("preferences-read-only", pictureFor(false)));
}

} // namespace quorvane::test
