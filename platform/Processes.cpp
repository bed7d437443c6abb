#include "platform/Processes.h"

#include <array>
#include <climits>
#include <utility>

#include <fcntl.h>

namespace quorvane {

std::optional<ProcessProgram> programOfProcess(std::int32_t pid)
{
    if (pid <= 0)
        return std::nullopt;
    const std::string link = "/proc/" + std::to_string(pid) + "/exe";
    FileDescriptor file(open(link.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    if (!file || length < 0)
        return std::nullopt;
    return ProcessProgram{std::move(file), std::string(path.data(), static_cast<std::size_t>(length))};
}

} // namespace quorvane
