#pragma once

#include <chrono>

namespace CLI {
class App;
}

namespace quorvane::platform {
class Locations;
class Log;
} // namespace quorvane::platform

namespace quorvane::cli {

// Exit statuses.
namespace ExitStatus {
constexpr int success = 0;
constexpr int findings = 1; // or differences, conflicts, joined lines
constexpr int failed = 1; // list, options, export, add, delete, import, check, codesign and digest
constexpr int usage = 2;
constexpr int failure = 3;
} // namespace ExitStatus

struct CommandContext {
    const platform::Locations& locations;
    platform::Log& log;
    std::chrono::milliseconds lockTimeout; // for another process to finish writing
};

// A command of quorvanectl. Declares its arguments to the parser, from which help, completions and the check
// of the manual are generated, and runs. One thread.
class Command {
public:
    Command() = default;
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // Adds the command with its options to `program`, and returns it. Parsed values are stored in this
    // object, which must outlive the parsing.
    virtual CLI::App& addTo(CLI::App& program) = 0;

    // Called once the arguments are parsed and before run(): throws CLI::ParseError when the arguments are
    // invalid in combination.
    virtual void check() { }

    // Returns the exit status, which is never that of a usage error. Throws std::bad_alloc.
    virtual int run(const CommandContext& context) = 0;
};

} // namespace quorvane::cli
