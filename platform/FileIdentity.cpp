#include "platform/FileIdentity.h"

#include <cerrno>

#include <sys/stat.h>

namespace quorvane::platform {

namespace {

std::int64_t nanoseconds(const timespec& time)
{
    constexpr std::int64_t perSecond = 1'000'000'000;
    return static_cast<std::int64_t>(time.tv_sec) * perSecond + time.tv_nsec;
}

} // namespace

FileIdentity FileIdentity::ofStatus(const struct stat& status)
{
    return {status.st_dev, status.st_ino, status.st_size, nanoseconds(status.st_mtim),
        nanoseconds(status.st_ctim)};
}

std::optional<FileIdentity> FileIdentity::ofPath(const std::string& path, std::error_code& error)
{
    error.clear();
    struct stat status { };
    if (path.find('\0') != std::string::npos)
        error.assign(EINVAL, std::generic_category());
    else if (lstat(path.c_str(), &status) == 0)
        return ofStatus(status);
    else if (errno == ENOENT || errno == ENOTDIR)
        return missing();
    else
        error.assign(errno, std::generic_category());
    return std::nullopt;
}

std::optional<FileIdentity> FileIdentity::ofDescriptor(int descriptor, std::error_code& error)
{
    error.clear();
    struct stat status { };
    if (fstat(descriptor, &status) == 0)
        return ofStatus(status);
    error.assign(errno, std::generic_category());
    return std::nullopt;
}

} // namespace quorvane::platform
