#pragma once

#include <string>
#include <system_error>
#include <vector>

namespace quorvane::platform {

// The outcome of a program that was run to completion.
struct ProgramRun {
    std::error_code error{}; // why it could not be run
    int status = -1; // its exit status; negative when it was ended by a signal or not run
    std::string output{}; // of its standard output
};

// Runs the program of that name, looked up in PATH, with these arguments, and waits for its end. It has this
// program's working folder, environment, standard input and standard error. Any thread.
ProgramRun runProgram(const std::string& name, const std::vector<std::string>& arguments);

} // namespace quorvane::platform
