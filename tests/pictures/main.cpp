#include "tests/pictures/KeptPicture.h"
#include "tests/support/TemporaryFolder.h"
#include "windows/WindowLook.h"

#include <QApplication>
#include <QFont>
#include <QLocale>

#include <gtest/gtest.h>

#include <string_view>

#include <stdlib.h> // clearenv

namespace {

// Nothing that the machine or its user has set gets into a picture.
void useSurroundingsOfPictures(const quorvane::test::TemporaryFolder& home)
{
    clearenv();
    qputenv("PATH", "/usr/bin:/bin");
    qputenv("HOME", QByteArray::fromStdString(home.path()));
    qputenv("TMPDIR", QByteArray::fromStdString(home.path()));
    qputenv("XDG_CONFIG_HOME", "/dev/null"); // a name that is shown
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(home.path()));
    qputenv("XDG_DATA_DIRS", "/usr/share");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("TZ", "UTC");
    qputenv("FONTCONFIG_FILE", QUORVANE_PICTURES_FOLDER "/fonts.conf");
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" QUORVANE_PICTURES_FOLDER "/screens.json");
}

} // namespace

// pictures_tests [--renew]: with --renew the pictures are kept that are seen.
int main(int argumentCount, char** arguments)
{
    testing::InitGoogleTest(&argumentCount, arguments);
    if (argumentCount > 1 && std::string_view(arguments[1]) == "--renew")
        quorvane::test::renewPictures();
    const quorvane::test::TemporaryFolder home;
    useSurroundingsOfPictures(home);
    QApplication application(argumentCount, arguments);
    QApplication::setApplicationName(QStringLiteral("Quorvane Configuration"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    QApplication::setCursorFlashTime(0); // does not blink
    quorvane::windows::applyWindowLook(application);
    return RUN_ALL_TESTS();
}
