#include "workflow/RulesFileProbe.h"

#include "platform/FileBytes.h"
#include "platform/FileDescriptor.h"

#include <fcntl.h>

namespace quorvane {

std::optional<Notice> rulesFileNotice(const std::string& path)
{
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file || !isAnythingAt(path))
        return std::nullopt;
    return Notice{"Failed to Open Rules File",
        "Quorvane Configuration could not access your rules file. Please click OK to relaunch and try "
        "again."};
}

} // namespace quorvane
