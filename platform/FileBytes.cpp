#include "platform/FileBytes.h"

#include "platform/FileDescriptor.h"
#include "platform/Unicode.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane {

namespace {

std::uint64_t memoryOfMachine()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES))
        * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// Where the last character of `text` begins, which a cut may have left incomplete.
std::size_t startOfLastCharacter(std::string_view text)
{
    constexpr std::size_t longest = 4;
    for (std::size_t length = 1; length <= longest && length <= text.size(); ++length) {
        const auto byte = static_cast<unsigned char>(text[text.size() - length]);
        if ((byte & 0xC0U) != 0x80U)
            return text.size() - length;
    }
    return text.size();
}

} // namespace

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

bool isTextAt(const std::string& path)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status { };
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)
        || static_cast<std::uint64_t>(status.st_size) > memoryOfMachine())
        return false;
    constexpr std::size_t pieceSize = 1U << 20U;
    std::string piece(pieceSize, '\0');
    std::size_t kept = 0; // bytes of a character whose end the next piece holds
    ssize_t got = 0;
    while ((got = read(file.get(), piece.data() + kept, piece.size() - kept)) > 0) {
        const std::string_view text(piece.data(), kept + static_cast<std::size_t>(got));
        const std::size_t end = startOfLastCharacter(text);
        if (!isValidUtf8(text.substr(0, end)))
            return false;
        kept = text.size() - end;
        std::memmove(piece.data(), piece.data() + end, kept);
    }
    return got == 0 && isValidUtf8({piece.data(), kept});
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

} // namespace quorvane
