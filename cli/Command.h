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

// What the program ends with.
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
    std::chrono::milliseconds lockTimeout; // for another program's write to end
};

// A command of quorvanectl. It describes itself to the parser, which help, completions and the check of the
// manual are made from, and does what the arguments say.
class Command {
public:
    Command() = default;
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // Adds the command with its options to `program`, and returns it. What is parsed goes into this object,
    // which must outlive the parsing.
    virtual CLI::App& addTo(CLI::App& program) = 0;

    // Called once the arguments are parsed and before run(): throws CLI::ParseError when what the parser has
    // taken one by one makes no sense.
    virtual void check() { }

    // Returns the exit status, which is never that of a usage error. Throws std::bad_alloc.
    virtual int run(const CommandContext& context) = 0;
};

} // namespace quorvane::cli
