#include "codesign/ProtectedPath.h"

namespace quorvane::codesign {

bool isSIP(std::string_view path)
{
    if (path.starts_with("/usr/"))
        return !path.starts_with("/usr/local/");
    return path.starts_with("/System/") || path.starts_with("/bin/") || path.starts_with("/sbin/");
}

} // namespace quorvane::codesign
