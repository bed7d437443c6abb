#include "platform/FileBytes.h"

#include "platform/RegularFile.h"
#include "platform/Unicode.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::platform {

namespace {

std::uint64_t memoryOfMachine()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES))
        * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

std::optional<std::string> readSmallFile(const std::string& path, std::size_t largestSize)
{
    std::error_code ignored;
    return readSmallFile(path, largestSize, ignored);
}

std::optional<std::string> readSmallFile(
    const std::string& path, std::size_t largestSize, std::error_code& error)
{
    const FileDescriptor file = openRegularFile(path, O_RDONLY, error);
    struct stat status { };
    if (!file)
        return std::nullopt;
    if (fstat(file.get(), &status) != 0) {
        error.assign(errno, std::generic_category());
        return std::nullopt;
    }
    if (static_cast<std::size_t>(status.st_size) > largestSize)
        return std::nullopt;
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    bytes.resize(readFully(file.get(), bytes.data(), bytes.size(), error));
    return error ? std::nullopt : std::optional(std::move(bytes));
}

bool writeFileInPlace(const std::string& path, std::string_view bytes)
{
    constexpr mode_t readableByAll = 0644;
    std::error_code error;
    const FileDescriptor file
        = openRegularFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, error, readableByAll);
    return file && writeFully(file.get(), bytes, error) == bytes.size();
}

bool isTextAt(const std::string& path)
{
    std::error_code error;
    const FileDescriptor file = openRegularFile(path, O_RDONLY, error);
    struct stat status { };
    if (!file || fstat(file.get(), &status) != 0
        || static_cast<std::uint64_t>(status.st_size) > memoryOfMachine())
        return false;
    constexpr std::size_t pieceSize = 1U << 20U;
    std::string piece(pieceSize, '\0');
    std::size_t kept = 0; // bytes of a character that continues in the next chunk
    for (;;) {
        const std::size_t got = readFully(file.get(), piece.data() + kept, piece.size() - kept, error);
        const std::string_view text(piece.data(), kept + got);
        if (error || got == 0)
            return !error && isValidUtf8(text);
        const std::size_t end = startOfLastCharacter(text);
        if (!isValidUtf8(text.substr(0, end)))
            return false;
        kept = text.size() - end;
        std::memmove(piece.data(), piece.data() + end, kept);
    }
}

bool isAnythingAt(const std::string& path)
{
    struct stat status { };
    return path.find('\0') == std::string::npos && stat(path.c_str(), &status) == 0;
}

bool isFolderAt(const std::string& path)
{
    struct stat status { };
    return path.find('\0') == std::string::npos && stat(path.c_str(), &status) == 0
        && S_ISDIR(status.st_mode);
}

std::optional<std::string> putUnreadFileAside(const std::string& path)
{
    constexpr int mostNames = 99;
    for (int number = 1; number <= mostNames; ++number) {
        const std::string aside = path + ".unread" + (number == 1 ? "" : "." + std::to_string(number));
        if (renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) == 0)
            return aside;
        if (errno != EEXIST)
            break;
    }
    return std::nullopt;
}

bool takeFileBack(const std::string& aside, const std::string& path)
{
    return std::rename(aside.c_str(), path.c_str()) == 0;
}

} // namespace quorvane::platform
