#pragma once

#include <optional>
#include <string>
#include <string_view>

// Restarting a program after the current one has ended. Any thread.

namespace quorvane::platform {

// The shell command that waits `delay` seconds and starts `program`. Shell metacharacters in the path are
// escaped.
std::string relaunchCommand(float delay, std::string_view program);

// The path of the program file behind a link of /proc, which marks a deleted file. Once another file has
// replaced it, as in an upgrade, that one counts.
std::string programPathFromLink(const std::string& link);

// The file of the running program, determined that way. None when it cannot be determined.
std::optional<std::string> runningProgram();

// Starts `program`, without arguments, after `delay` seconds and returns at once. It runs in a process
// session of its own, with the environment, working folder and standard streams of this program and no other
// descriptor, and needs no waiting for: it is not a child of this process. False when no process could be
// created.
bool startAfterDelay(float delay, const std::string& program);

// The same with the running program. False also when its file cannot be determined.
bool relaunchAfterDelay(float delay);

} // namespace quorvane::platform
