#include "platform/Relaunch.h"

#include "platform/FileBytes.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <system_error>

#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

// As "%f" in the C locale: the shell does not understand a decimal comma.
std::string decimal(float number)
{
    constexpr int fractionalDigits = 6;
    std::array<char, 64> text{};
    const auto [end, error] = std::to_chars(
        text.data(), text.data() + text.size(), number, std::chars_format::fixed, fractionalDigits);
    return error == std::errc() ? std::string(text.data(), end) : std::string("0");
}

// In the child of a fork: only async-signal-safe calls, since other threads of the parent may have held
// locks.
[[noreturn]] void becomeShell(const char* command)
{
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    closefrom(STDERR_FILENO + 1);
    execl("/bin/sh", "/bin/sh", "-c", command, nullptr);
    _exit(127);
}

} // namespace

std::string relaunchCommand(float delay, std::string_view program)
{
    std::string command = "sleep " + decimal(delay) + "; exec \"";
    for (const char c : program) {
        if (std::string_view("$`\"\\").find(c) != std::string_view::npos)
            command += '\\';
        command += c;
    }
    return command + '"';
}

std::string programPathFromLink(const std::string& link)
{
    constexpr std::string_view mark = " (deleted)";
    if (!link.ends_with(mark) || isAnythingAt(link))
        return link;
    return link.substr(0, link.size() - mark.size());
}

bool startAfterDelay(float delay, const std::string& program)
{
    const std::string command = relaunchCommand(delay, program);
    const pid_t child = fork();
    if (child == 0) {
        // The child exits at once, so that init adopts and reaps the grandchild.
        const pid_t grandchild = _Fork();
        if (grandchild == 0)
            becomeShell(command.c_str());
        _exit(grandchild > 0 ? 0 : 1);
    }
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return child > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::optional<std::string> runningProgram()
{
    std::error_code error;
    const std::filesystem::path link = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::nullopt : std::optional(programPathFromLink(link.string()));
}

bool relaunchAfterDelay(float delay)
{
    const auto program = runningProgram();
    return program && startAfterDelay(delay, *program);
}

} // namespace quorvane::platform
