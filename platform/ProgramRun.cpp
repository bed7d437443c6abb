#include "platform/ProgramRun.h"

#include "platform/FileDescriptor.h"
#include "platform/RegularFile.h"
#include "platform/SystemError.h"

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

std::vector<char*> pointersTo(const std::string& name, const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers{const_cast<char*>(name.c_str())};
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

std::string readToEnd(int descriptor)
{
    constexpr std::size_t pieceSize = 4096;
    std::string text;
    std::error_code error;
    for (std::size_t got = pieceSize; got == pieceSize;) {
        const std::size_t size = text.size();
        text.resize(size + pieceSize);
        got = readFully(descriptor, text.data() + size, pieceSize, error);
        text.resize(size + got);
    }
    return text;
}

int statusOf(pid_t process)
{
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace

ProgramRun runProgram(const std::string& name, const std::vector<std::string>& arguments)
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
        return {systemError(errno)};
    const FileDescriptor reading(ends[0]);
    FileDescriptor writing(ends[1]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writing.get(), STDOUT_FILENO);
    pid_t process = 0;
    const int error = posix_spawnp(
        &process, name.c_str(), &actions, nullptr, pointersTo(name, arguments).data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        return {systemError(error)};
    writing = FileDescriptor();
    ProgramRun run;
    run.output = readToEnd(reading.get());
    run.status = statusOf(process);
    return run;
}

} // namespace quorvane::platform
