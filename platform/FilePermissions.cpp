#include "platform/FilePermissions.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace quorvane::platform {

std::optional<std::uint32_t> permissionsOf(const std::string& path)
{
    struct stat status { };
    if (stat(path.c_str(), &status) != 0)
        return std::nullopt;
    return status.st_mode & static_cast<std::uint32_t>(ALLPERMS);
}

bool setPermissions(const std::string& path, std::uint32_t permissions)
{
    return fchmodat(AT_FDCWD, path.c_str(), permissions, AT_SYMLINK_NOFOLLOW) == 0;
}

} // namespace quorvane::platform
