#include "platform/FileBytes.h"

#include "platform/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

std::optional<std::string> readSmallFile(const std::string& path, std::size_t largestSize)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status { };
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    if (static_cast<std::size_t>(status.st_size) > largestSize)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t got = read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (got < 0)
            return std::nullopt;
        if (got == 0)
            break;
        filled += static_cast<std::size_t>(got);
    }
    bytes.resize(filled);
    return bytes;
}

bool writeFileInPlace(const std::string& path, std::string_view bytes)
{
    constexpr mode_t readableByAll = 0644;
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    const FileDescriptor file(open(path.c_str(), flags, readableByAll));
    struct stat status { };
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    while (!bytes.empty()) {
        const ssize_t written = write(file.get(), bytes.data(), bytes.size());
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool isAnythingAt(const std::string& path)
{
    struct stat status { };
    return path.find('\0') == std::string::npos && stat(path.c_str(), &status) == 0;
}

} // namespace quorvane
