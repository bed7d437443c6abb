#pragma once

#include "tests/support/TemporaryFolder.h"

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::test {

// A private message bus for a test, without activatable services.
class PrivateBus {
public:
    PrivateBus()
    {
        const std::string configuration = m_folder.write("bus.conf",
            R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path=)"
                + m_folder.path("bus") + R"(</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow own="*"/><allow send_destination="*"/>
<allow receive_sender="*"/></policy></busconfig>)");
        int ends[2] = {-1, -1};
        if (pipe(ends) != 0)
            throw std::runtime_error("no pipe");
        m_daemon = fork();
        if (m_daemon == 0) {
            // It prints errors about limits that a test's user may not raise.
            dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
            execlp("dbus-daemon", "dbus-daemon", "--nofork", ("--config-file=" + configuration).c_str(),
                ("--print-address=" + std::to_string(ends[1])).c_str(), nullptr);
            _exit(1);
        }
        close(ends[1]);
        std::array<char, 1> first{};
        const bool listens
            = read(ends[0], first.data(), first.size()) == 1; // it prints its address once it does
        close(ends[0]);
        if (!listens)
            throw std::runtime_error("dbus-daemon did not start");
    }
    ~PrivateBus() { end(); }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    std::string address() const { return "unix:path=" + m_folder.path("bus"); }

    void end()
    {
        if (m_daemon <= 0)
            return;
        kill(m_daemon, SIGKILL);
        waitpid(std::exchange(m_daemon, -1), nullptr, 0);
    }

private:
    const TemporaryFolder m_folder;
    pid_t m_daemon = -1;
};

} // namespace quorvane::test
