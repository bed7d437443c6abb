#pragma once

namespace quorvane::cli {

// Runs quorvanectl with these arguments, program name first. Returns the exit status (cli/Command.h).
// Messages go to standard error.
int runCommandLine(int argumentCount, const char* const* arguments);

// The exit status of the command that runs when memory runs out. Any thread; allocates nothing.
int statusWithoutMemory();

} // namespace quorvane::cli
