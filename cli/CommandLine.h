#pragma once

namespace quorvane {

// Runs quorvanectl with these arguments, program name first. Returns the exit status: 0; 1 for a failure or
// findings; 2 for a usage error. Messages go to standard error.
int runCommandLine(int argumentCount, const char* const* arguments);

} // namespace quorvane
