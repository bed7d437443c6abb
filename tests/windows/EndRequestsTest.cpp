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

#include <csignal>
#include <memory>

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

} // namespace

TEST(EndRequests, EverySignalOfThreeIsReceivedByTheEventLoopAndNotAtOnce)
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

TEST(EndRequests, SignalsNeverEndTheProcessHoweverManyArrive)
{
    const Requests requests;
    for (int number = 0; number < 100000; ++number)
        raise(endSignals[number % 3]);
    EXPECT_TRUE(QTest::qWaitFor([&] { return requests.count > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(requests.count, 1) << "all that have arrived by then are one request";
}

TEST(EndRequests, ReachALocalLoopThatWaitsForAPersonAndTheNextOneToo)
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

TEST(EndRequests, EndOfTheSessionIsOneAndClosesNoWindow)
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

TEST(EndRequests, SignalThatTheProgramWasStartedToIgnoreStaysIgnored)
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

TEST(EndRequests, SignalsEndTheProcessAgainAfterwards)
{
    {
        const Requests requests;
    }
    for (const int signal : endSignals)
        EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_DFL) << signal;
}

TEST(EndRequests, ProgramsStartedMeanwhileCanBeEndedBySignals)
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
