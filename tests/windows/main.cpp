#include "tests/support/TemporaryFolder.h"
#include "windows/WindowLook.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    // Settings that a test leaves behind must not be the user's.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const quorvane::test::TemporaryFolder home;
    qputenv("HOME", QByteArray::fromStdString(home.path()));
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(home.path("config")));
    qputenv("XDG_RUNTIME_DIR", QByteArray::fromStdString(home.path()));
    testing::InitGoogleTest(&argumentCount, arguments);
    QApplication application(argumentCount, arguments);
    quorvane::windows::applyWindowLook(application);
    return RUN_ALL_TESTS();
}
