#pragma once

#include "workflow/Notice.h"

#include <optional>
#include <string>

namespace quorvane::workflow {

// How long the shell waits before it starts the program again after such a notice, in seconds.
constexpr float relaunchDelay = 3.0F;

// What the user is told when something is at `path`, where the rules file belongs, that cannot be opened: a
// symbolic link, say, or a file that its permissions forbid. The program is then to be started again. None
// when it can be opened, which leaves a descriptor of it open for good, and when nothing is there. Never
// blocks on a pipe or device. Any thread.
std::optional<Notice> rulesFileNotice(const std::string& path);

} // namespace quorvane::workflow
