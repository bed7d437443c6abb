#pragma once

#include <optional>
#include <string>
#include <string_view>

// Starting a program again after the present one has ended. Any thread.

namespace quorvane::platform {

// The shell command that waits `delay` seconds and starts `program`. Whatever the shell would interpret in
// the path is escaped.
std::string relaunchCommand(float delay, std::string_view program);

// The path of the program file behind a link of /proc, which marks a file that is gone. Once another file
// has taken its place, as an upgrade does, that one counts.
std::string programPathFromLink(const std::string& link);

// Starts `program`, without arguments, after `delay` seconds and returns at once. It runs in a process
// session of its own, with the environment, working folder and standard streams of this program and no other
// descriptor, and is nobody's child that would have to be waited for. False when no process could be made.
bool startAfterDelay(float delay, const std::string& program);

// The same with the program that runs. False also when its file cannot be told.
bool relaunchAfterDelay(float delay);

} // namespace quorvane::platform
