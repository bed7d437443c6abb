#include "workflow/RulesFileProbe.h"

#include "platform/FileBytes.h"

#include <fcntl.h>

namespace quorvane::workflow {

std::optional<Notice> rulesFileNotice(const std::string& path)
{
    // Deliberate: the descriptor is never closed.
    const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file >= 0 || !platform::isAnythingAt(path))
        return std::nullopt;
    return Notice{"Failed to Open Rules File",
        "Quorvane Configuration could not access your rules file. Please click OK to relaunch and try "
        "again."};
}

} // namespace quorvane::workflow
