#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::test {

// Starts a program with one argument, like "sleep", and ends it in the destructor.
class RunningProcess {
public:
    // `name` is argv[0], which need not be the program's name.
    explicit RunningProcess(
        const std::string& program, const std::string& argument = "1000", const std::string& name = "sleep")
        : m_pid(fork())
    {
        if (m_pid == 0) {
            execl(program.c_str(), name.c_str(), argument.c_str(), nullptr);
            _exit(1);
        }
        // Waits until the child has executed the program: then the link names it.
        const std::string link = "/proc/" + std::to_string(m_pid) + "/exe";
        std::error_code error;
        while (std::filesystem::read_symlink(link, error) == std::filesystem::read_symlink("/proc/self/exe")
            && !hasEnded())
            usleep(1000);
    }
    ~RunningProcess() { end(); }
    RunningProcess(const RunningProcess&) = delete;
    RunningProcess& operator=(const RunningProcess&) = delete;

    std::int32_t pid() const { return m_pid; }

    // Whether it has ended by itself or by a signal. It stays a zombie.
    bool hasEnded() const
    {
        siginfo_t how{};
        return waitid(P_PID, static_cast<id_t>(m_pid), &how, WEXITED | WNOHANG | WNOWAIT) == 0
            && how.si_pid != 0;
    }

    // Waits until it ends; the signal that ended it, 0 when it ended otherwise.
    int endingSignal()
    {
        int status = 0;
        waitpid(std::exchange(m_pid, -1), &status, 0);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

    void end()
    {
        m_ended = m_pid;
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        m_pid = -1;
    }
    // The number it had before end().
    std::int32_t ended() const { return m_ended; }

private:
    pid_t m_pid;
    pid_t m_ended = -1;
};

} // namespace quorvane::test
