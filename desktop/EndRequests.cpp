#include "desktop/EndRequests.h"

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane::desktop {

namespace {

constexpr std::array endSignals{SIGTERM, SIGINT, SIGHUP};

volatile std::sig_atomic_t s_handlersEnd = -1;

// Only async-signal-safe calls. A full pipe drops the byte: requests are pending already.
void noteSignal(int /*signal*/)
{
    const int interrupted = errno;
    constexpr char request = 0;
    [[maybe_unused]] const ssize_t written = write(s_handlersEnd, &request, sizeof request);
    errno = interrupted;
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction present { };
    if (sigaction(signal, nullptr, &present) != 0 || present.sa_handler == SIG_IGN)
        return;
    struct sigaction wanted { };
    wanted.sa_handler = handler;
    wanted.sa_flags = SA_RESTART;
    sigaction(signal, &wanted, nullptr);
}

} // namespace

// Handlers and not signalfd(2): blocked signals would stay blocked in every child process.
EndRequests::EndRequests()
{
    QCoreApplication::instance()->installEventFilter(this);
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // signals keep ending the program at once
    m_received = platform::FileDescriptor(ends[0]);
    m_handlersEnd = platform::FileDescriptor(ends[1]);
    auto* notifier = new QSocketNotifier(m_received.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &EndRequests::takeSignals);
    s_handlersEnd = m_handlersEnd.get();
    for (const int signal : endSignals)
        handle(signal, noteSignal);
}

EndRequests::~EndRequests()
{
    for (const int signal : endSignals)
        handle(signal, SIG_DFL);
    s_handlersEnd = -1;
}

void EndRequests::takeSignals()
{
    std::array<char, 64> requests{};
    while (read(m_received.get(), requests.data(), requests.size()) > 0) { }
    Q_EMIT endRequested();
}

bool EndRequests::eventFilter(QObject* target, QEvent* event)
{
    // How the session manager ends a program. The toolkit would close every window first.
    if (event->type() != QEvent::Quit || target != QCoreApplication::instance())
        return false;
    Q_EMIT endRequested();
    return true;
}

} // namespace quorvane::desktop
