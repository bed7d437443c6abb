#include "desktop/PkexecCommand.h"

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

#include <QApplication>
#include <QCloseEvent>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace quorvane::windows {

namespace {

class Pkexec : public testing::Test {
protected:
    // Puts a script named pkexec first on the path.
    void pretend(const std::string& script)
    {
        const std::string file = m_folder.write("bin/pkexec", "#!/bin/sh\n" + script + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    test::TemporaryFolder m_folder;
    test::EnvironmentVariable m_path{"PATH", m_folder.path("bin") + ":" + std::string(getenv("PATH"))};
    desktop::PkexecCommand m_command;
};

} // namespace

TEST_F(Pkexec, RunsTheCommandInTheShell)
{
    pretend("printf '%s|' \"$@\" > '" + m_folder.path("arguments") + "'");
    EXPECT_EQ(m_command.run("/bin/chmod 777 '/a b'"), "");
    EXPECT_EQ(
        test::TemporaryFolder::contents(m_folder.path("arguments")), "/bin/sh|-c|/bin/chmod 777 '/a b'|");
}

TEST_F(Pkexec, IsNotToldOfAShellThatItMightRefuse)
{
    const test::EnvironmentVariable shell("SHELL", "/opt/odd/shell");
    pretend("test -z \"$SHELL\"");
    EXPECT_EQ(m_command.run("true"), "");
}

TEST_F(Pkexec, NeitherWaitsForInputNorKeepsOutput)
{
    pretend("streams=\"$(readlink /proc/$$/fd/0) $(readlink /proc/$$/fd/1)\"\necho \"$streams\" > '"
        + m_folder.path("streams") + "'");
    EXPECT_EQ(m_command.run("true"), "");
    EXPECT_EQ(test::TemporaryFolder::contents(m_folder.path("streams")), "/dev/null /dev/null\n");
}

TEST_F(Pkexec, FailureIsToldInOneLine)
{
    pretend("echo 'Error executing command as another user:' >&2; echo 'Request dismissed' >&2; exit 126");
    EXPECT_EQ(m_command.run("true"),
        "pkexec: status 126: Error executing command as another user: Request dismissed");
    pretend("exit 127");
    EXPECT_EQ(m_command.run("true"), "pkexec: status 127: ");
    pretend("kill -9 $$");
    EXPECT_EQ(m_command.run("true"), "pkexec: ended by a signal");
}

TEST_F(Pkexec, LongComplaintIsCut)
{
    pretend("head -c 300000 /dev/zero | tr '\\0' x >&2; exit 1");
    EXPECT_EQ(m_command.run("true"), "pkexec: status 1: " + std::string(1000, 'x'));
}

TEST_F(Pkexec, MissingIsAFailureAndNoHang)
{
    const test::EnvironmentVariable nowhere("PATH", m_folder.path("empty"));
    const std::string outcome = m_command.run("true");
    EXPECT_EQ(outcome.substr(0, 8), "pkexec: ");
    EXPECT_GT(outcome.size(), 8U);
}

TEST_F(Pkexec, IsInterruptedByTheEndOfTheProgram)
{
    pretend("exec tail -f /dev/null");
    std::string outcome;
    QTimer::singleShot(0, [&] {
        QTimer::singleShot(0, [] { QCoreApplication::exit(); });
        outcome = m_command.run("true");
    });
    QCoreApplication::exec();
    EXPECT_EQ(outcome, "pkexec: interrupted");
}

TEST_F(Pkexec, WindowsArePaintedButTakeNoInputWhileItRuns)
{
    class Window : public QWidget {
    public:
        int presses = 0;
        int paintings = 0;

    protected:
        void mousePressEvent(QMouseEvent*) override { ++presses; }
        void paintEvent(QPaintEvent*) override { ++paintings; }
    } window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const int paintingsBefore = window.paintings;
    // It ends when the window has been clicked and painted.
    const std::string done = m_folder.path("done");
    pretend("while ! test -e '" + done + "'; do sleep 0.01; done");
    QTimer::singleShot(0, [&] {
        QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
        window.repaint();
        m_folder.write("done", "");
    });

    EXPECT_EQ(m_command.run("true"), "");
    EXPECT_EQ(window.presses, 0);
    EXPECT_GT(window.paintings, paintingsBefore);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(window.presses, 1) << "and again afterwards";
}

} // namespace quorvane::windows
