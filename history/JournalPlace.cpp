#include "history/JournalPlace.h"

#include "history/ContentDigest.h"

#include "platform/Account.h"
#include "platform/FileBytes.h"
#include "platform/FileDescriptor.h"
#include "platform/RegularFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::history {

namespace {

constexpr mode_t forOwnerOnly = 0700;
constexpr mode_t fileForOwnerOnly = 0600;

// The real path, also of a file that does not exist yet.
std::string realPathOf(const std::string& file)
{
    std::error_code failed;
    const std::filesystem::path absolute = std::filesystem::absolute(file, failed);
    const std::filesystem::path real = std::filesystem::weakly_canonical(absolute, failed);
    return failed ? absolute.lexically_normal().string() : real.string();
}

std::string reasonOf(int error)
{
    return std::generic_category().message(error);
}

std::optional<struct stat> statusOf(const std::string& path, int flags)
{
    struct stat status { };
    return fstatat(AT_FDCWD, path.c_str(), &status, flags) == 0 ? std::optional(status) : std::nullopt;
}

// The status of `path` or, when it is missing, of the nearest existing folder above it.
std::optional<struct stat> statusOfNearest(std::filesystem::path path)
{
    for (;;) {
        if (const auto status = statusOf(path.string(), 0))
            return status;
        if (!path.has_relative_path())
            return std::nullopt;
        path = path.parent_path();
    }
}

bool syncFolder(const std::string& path)
{
    const platform::FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder && fsync(folder.get()) == 0;
}

bool makeFolders(const std::filesystem::path& folder)
{
    if (!folder.has_relative_path() || statusOf(folder.string(), 0))
        return true;
    return makeFolders(folder.parent_path()) && (mkdir(folder.c_str(), forOwnerOnly) == 0 || errno == EEXIST)
        && syncFolder(folder.parent_path().string());
}

// Creates a file of `contents` unless there is one; a link, even a dangling one, is never followed.
bool makeFile(const std::string& path, std::string_view contents = {})
{
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const platform::FileDescriptor file(open(path.c_str(), flags, fileForOwnerOnly));
    if (!file)
        return errno == EEXIST;
    std::error_code error;
    return platform::writeFully(file.get(), contents, error) == contents.size() && fsync(file.get()) == 0;
}

const std::string noDigest(64, '-');

} // namespace

std::string defaultStateFolder()
{
    // Relative paths must be ignored in this variable.
    if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state == '/')
        return std::string(state) + "/quorvane";
    const std::string home = platform::homeDirectory();
    return home.empty() ? "" : home + "/.local/state/quorvane";
}

JournalPlace::JournalPlace(std::string stateFolder, const std::string& watchedFile)
    : m_folder(stateFolder.empty() ? std::string() : realPathOf(stateFolder))
    , m_watchedFile(realPathOf(watchedFile))
{
    constexpr std::size_t enoughDigits = 32; // 128 bits of a digest never collide
    m_base = m_folder + "/" + contentDigest(m_watchedFile).substr(0, enoughDigits);
}

std::optional<std::string> JournalPlace::refusal() const
{
    constexpr uid_t root = 0;
    const uid_t user = geteuid();
    if (m_folder.empty())
        return "there is no home folder to keep it in";
    const auto folder = statusOfNearest(m_folder);
    const bool isThere = folder && statusOf(m_folder, 0).has_value();
    if (isThere && !S_ISDIR(folder->st_mode))
        return m_folder + " is no folder";
    // Root leaves nothing behind in another user's home.
    if (folder && folder->st_uid != user && (isThere || user == root))
        return m_folder + " belongs to another user";
    if (const auto file = statusOf(databaseFile(), AT_SYMLINK_NOFOLLOW)) {
        if (!S_ISREG(file->st_mode))
            return databaseFile() + " is no regular file";
        if (file->st_uid != user)
            return databaseFile() + " belongs to another user";
    }
    const auto watched = statusOf(m_watchedFile, 0);
    if (user == root && watched && watched->st_uid != root)
        return m_watchedFile + " belongs to another user";
    return std::nullopt;
}

bool JournalPlace::hasDatabase() const
{
    return statusOf(databaseFile(), AT_SYMLINK_NOFOLLOW).has_value();
}

std::optional<std::string> JournalPlace::makeFolder() const
{
    if (!makeFolders(m_folder) || chmod(m_folder.c_str(), forOwnerOnly) != 0)
        return m_folder + ": " + reasonOf(errno);
    return std::nullopt;
}

std::optional<std::string> JournalPlace::prepare() const
{
    if (auto problem = makeFolder())
        return problem;
    if (!makeFile(databaseFile()) || !syncFolder(m_folder))
        return databaseFile() + ": " + reasonOf(errno);
    return std::nullopt;
}

bool JournalPlace::hasMarker() const
{
    struct stat status { };
    return lstat(markerFile().c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

bool JournalPlace::makeMarker() const
{
    return makeFile(markerFile(), noDigest) && syncFolder(m_folder);
}

bool JournalPlace::noteLeft(const std::string& digest) const
{
    std::error_code error;
    const platform::FileDescriptor file
        = platform::openRegularFile(markerFile(), O_WRONLY | O_NOFOLLOW, error);
    return file && platform::writeFully(file.get(), digest, error) == digest.size() && fsync(file.get()) == 0;
}

std::string JournalPlace::left() const
{
    const std::string noted = platform::readSmallFile(markerFile(), noDigest.size()).value_or(std::string());
    return noted == noDigest ? std::string() : noted;
}

void JournalPlace::removeMarker() const
{
    unlink(markerFile().c_str());
}

platform::FileIdentity JournalPlace::databaseIdentity() const
{
    std::error_code unknown;
    return platform::FileIdentity::ofPath(databaseFile(), unknown)
        .value_or(platform::FileIdentity::missing());
}

std::optional<std::string> JournalPlace::setAside(const platform::FileIdentity& database) const
{
    // One process at a time, so that a second one does not mistake the new database for the damaged one.
    const platform::FileDescriptor folder(open(m_folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder || flock(folder.get(), LOCK_EX | LOCK_NB) != 0 || !databaseIdentity().isSameFileAs(database))
        return std::nullopt;
    constexpr int mostNames = 9;
    for (int number = 1; number <= mostNames; ++number) {
        const std::string aside = m_base + ".damaged" + (number == 1 ? "" : "." + std::to_string(number));
        if (statusOf(aside, AT_SYMLINK_NOFOLLOW))
            continue;
        // The rollback journal first: it would be taken for that of a new database.
        const std::string rollback = databaseFile() + "-journal";
        if (rename(rollback.c_str(), (aside + "-journal").c_str()) != 0 && errno != ENOENT)
            break;
        if (renameat2(AT_FDCWD, databaseFile().c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) == 0)
            return aside;
        break;
    }
    return std::nullopt;
}

std::uint64_t JournalPlace::sizeOnDisk() const
{
    std::uint64_t size = 0;
    for (const std::string& file : {databaseFile(), databaseFile() + "-journal"})
        if (const auto status = statusOf(file, AT_SYMLINK_NOFOLLOW))
            size += static_cast<std::uint64_t>(status->st_size);
    return size;
}

} // namespace quorvane::history
