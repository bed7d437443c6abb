#include "desktop/EndRequests.h"

#include "desktop/InputLock.h"

#include <QApplication>
#include <QDialog>
#include <QEventLoop>
#include <QProcess>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <memory>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace quorvane::windows {

namespace {

constexpr int endSignals[] = {SIGTERM, SIGINT, SIGHUP};

// Requests, and how many have been received.
class Requests {
public:
    Requests()
    {
        QObject::connect(&requests, &desktop::EndRequests::endRequested, [this] { ++count; });
    }

    desktop::EndRequests requests;
    int count = 0;
};

// A window that notes when it is asked to close.
class Window : public QWidget {
public:
    Window() { show(); }
    int closings = 0;

protected:
    void closeEvent(QCloseEvent* /*event*/) override { ++closings; }
};

// Begins as in a shell's foreground: what runs the tests may itself ignore some of the signals.
class EndRequestsTest : public testing::Test {
protected:
    EndRequestsTest()
    {
        for (const int signal : endSignals)
            m_before.push_back(std::signal(signal, SIG_DFL));
    }
    ~EndRequestsTest() override
    {
        for (std::size_t number = 0; number < m_before.size(); ++number)
            std::signal(endSignals[number], m_before[number]);
    }

private:
    std::vector<void (*)(int)> m_before;
};

} // namespace

TEST_F(EndRequestsTest, EverySignalOfThreeIsReceivedByTheEventLoopAndNotAtOnce)
{
    const Requests requests;
    int expected = 0;
    for (const int signal : endSignals) {
        raise(signal);
        EXPECT_EQ(requests.count, expected) << "in the middle of something";
        ++expected;
        EXPECT_TRUE(QTest::qWaitFor([&] { return requests.count == expected; })) << signal;
    }
}

TEST_F(EndRequestsTest, SignalsNeverEndTheProcessHoweverManyArrive)
{
    const Requests requests;
    errno = 0;
    for (int number = 0; number < 100000; ++number)
        raise(endSignals[number % 3]);
    EXPECT_EQ(errno, 0) << "what is interrupted does not see what a full pipe says";
    EXPECT_TRUE(QTest::qWaitFor([&] { return requests.count > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(requests.count, 1) << "all that have arrived by then are one request";
}

TEST_F(EndRequestsTest, ReachALocalLoopThatWaitsForAPersonAndTheNextOneToo)
{
    const Requests requests;
    for (int expected = 1; expected <= 2; ++expected) {
        QDialog dialog;
        QObject::connect(&requests.requests, &desktop::EndRequests::endRequested, &dialog, &QDialog::reject);
        QTimer::singleShot(0, &dialog, [] { raise(SIGTERM); });
        dialog.exec();
        EXPECT_EQ(requests.count, expected);
    }
    const desktop::InputLock lock;
    QEventLoop wait;
    QObject::connect(&requests.requests, &desktop::EndRequests::endRequested, &wait, &QEventLoop::quit);
    raise(SIGHUP);
    wait.exec();
    EXPECT_EQ(requests.count, 3);
}

TEST_F(EndRequestsTest, EndOfTheSessionIsOneAndClosesNoWindow)
{
    const Window window;
    const Requests requests;
    for (const bool locked : {false, true}) {
        const std::unique_ptr<desktop::InputLock> lock
            = locked ? std::make_unique<desktop::InputLock>() : nullptr;
        const int before = requests.count;
        QEvent quit(QEvent::Quit); // as the session manager's word to die arrives
        QCoreApplication::sendEvent(QCoreApplication::instance(), &quit);
        EXPECT_EQ(requests.count, before + 1);
    }
    EXPECT_EQ(window.closings, 0);
    EXPECT_TRUE(window.isVisible());
}

TEST_F(EndRequestsTest, SignalThatTheProgramWasStartedToIgnoreStaysIgnored)
{
    std::signal(SIGHUP, SIG_IGN);
    {
        const Requests requests;
        raise(SIGHUP);
        raise(SIGTERM);
        EXPECT_TRUE(QTest::qWaitFor([&] { return requests.count > 0; }));
        EXPECT_EQ(std::signal(SIGHUP, SIG_IGN), SIG_IGN);
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST_F(EndRequestsTest, ACallThatASignalInterruptsGoesOn)
{
    const Requests requests;
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    std::thread sender([reader = pthread_self(), &ends] {
        for (int number = 0; number < 50; ++number) {
            pthread_kill(reader, SIGTERM);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        close(ends[1]);
    });
    char nothing = 0;
    EXPECT_EQ(read(ends[0], &nothing, 1), 0) << errno;
    sender.join();
    close(ends[0]);
}

TEST_F(EndRequestsTest, SignalsKeepEndingTheProcessWhereTheyCannotBePassedOn)
{
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const Requests requests;
    setrlimit(RLIMIT_NOFILE, &before);
    for (const int signal : endSignals)
        EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << signal;
}

TEST_F(EndRequestsTest, SignalsEndTheProcessAgainAfterwards)
{
    {
        const Requests requests;
    }
    for (const int signal : endSignals)
        EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << signal;
}

TEST_F(EndRequestsTest, ProgramsStartedMeanwhileCanBeEndedBySignals)
{
    const Requests requests;
    QProcess program;
    program.start(
        QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QStringLiteral("kill -TERM $$; echo survived")});
    ASSERT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(program.readAllStandardOutput().toStdString(), "");
}

} // namespace quorvane::windows
