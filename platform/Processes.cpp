#include "platform/Processes.h"

#include <array>
#include <charconv>
#include <climits>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::platform {

namespace {

std::string fileOfProcess(std::int32_t pid, const char* name)
{
    return "/proc/" + std::to_string(pid) + "/" + name;
}

std::optional<std::string> targetOfLink(const std::string& link)
{
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink(link.c_str(), path.data(), path.size());
    if (length < 0)
        return std::nullopt;
    return std::string(path.data(), static_cast<std::size_t>(length));
}

bool isSameFile(const std::string& one, const std::string& other)
{
    struct stat first { };
    struct stat second { };
    return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0
        && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace

std::optional<ProcessProgram> programOfProcess(std::int32_t pid)
{
    if (pid <= 0)
        return std::nullopt;
    const std::string link = fileOfProcess(pid, "exe");
    FileDescriptor file(open(link.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    auto path = targetOfLink(link);
    if (!file || !path)
        return std::nullopt;
    return ProcessProgram{std::move(file), *std::move(path)};
}

std::optional<std::string> programPathOfProcess(std::int32_t pid)
{
    const std::string link = fileOfProcess(pid, "exe");
    auto path = targetOfLink(link);
    // The kernel appends this to the path of a deleted file. A file's own name may end like this as well.
    constexpr std::string_view gone = " (deleted)";
    if (path && path->ends_with(gone) && !isSameFile(link, *path))
        path->resize(path->size() - gone.size());
    return path;
}

std::optional<std::uint64_t> startTimeOfProcess(std::int32_t pid)
{
    std::ifstream file(fileOfProcess(pid, "stat"));
    const std::string line{std::istreambuf_iterator<char>(file), {}};
    // The second field is the program's name in parentheses, which may itself contain parentheses and blanks.
    std::size_t at = line.rfind(')');
    constexpr int startTimeField = 22;
    for (int field = 2; field < startTimeField && at != std::string::npos; ++field)
        at = line.find(' ', at + 1);
    if (at == std::string::npos)
        return std::nullopt;
    std::uint64_t ticks = 0;
    const auto end = std::from_chars(line.data() + at + 1, line.data() + line.size(), ticks).ptr;
    if (end == line.data() + at + 1)
        return std::nullopt;
    return ticks;
}

} // namespace quorvane::platform
