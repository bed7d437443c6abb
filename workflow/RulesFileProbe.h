#pragma once

#include "workflow/Notice.h"

#include <optional>
#include <string>

namespace quorvane::workflow {

// How long the shell waits before it restarts the program after such a notice, in seconds.
constexpr float relaunchDelay = 3.0F;

// The notice when `path`, the place of the rules file, cannot be opened: a symbolic link, for example, or a
// file without read permission. The program must then be restarted. None when it can be opened, which leaves
// its descriptor open permanently, and when nothing is there. Never blocks on a pipe or device. Any thread.
std::optional<Notice> rulesFileNotice(const std::string& path);

} // namespace quorvane::workflow
