#include "cli/CommandLine.h"

#include "cli/Commands.h"
#include "cli/Output.h"
#include "platform/Account.h"
#include "platform/Locations.h"
#include "platform/Log.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

constexpr std::chrono::seconds usualLockTimeout{5};

// Parses the argument of --lock-timeout; none when it is not a number of seconds.
std::optional<std::chrono::milliseconds> lockTimeoutOf(const std::string& seconds)
{
    constexpr double longest = 365.0 * 24 * 3600;
    double value = -1;
    const char* end = seconds.data() + seconds.size();
    const auto [stop, error] = std::from_chars(seconds.data(), end, value, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !std::isfinite(value) || value < 0)
        return std::nullopt;
    return std::chrono::milliseconds(static_cast<std::int64_t>(std::min(value, longest) * 1000));
}

std::string onlySeconds(const std::string& text)
{
    return lockTimeoutOf(text) ? "" : "'" + text + "' is not a number of seconds";
}

// Of the running command; global, for the handler that has access to nothing else.
std::atomic<int> failureStatus = ExitStatus::failed;

// The failure status of the command that the arguments name. Allocates nothing, since memory may run out
// before they are parsed.
int failureStatusOf(int count, const char* const* arguments)
{
    constexpr std::array<std::string_view, 9> failing{
        "list", "options", "export", "add", "delete", "import", "check", "codesign", "digest"};
    for (int number = 1; number < count; ++number) {
        const std::string_view argument = arguments[number];
        if (argument == "--root" || argument == "--lock-timeout")
            ++number; // skips its value
        else if (!argument.starts_with('-'))
            return std::find(failing.begin(), failing.end(), argument) != failing.end() ? ExitStatus::failed
                                                                                        : ExitStatus::failure;
    }
    return ExitStatus::failed;
}

// In the order of the help text.
constexpr std::array commandMakers{makeListCommand, makeOptionsCommand, makeExportCommand, makeAddCommand,
    makeDeleteCommand, makeSetCommand, makeRemoveCommand, makeMoveCommand, makeApplyCommand,
    makeImportCommand, makeTouchingCommand, makeHistoryCommand, makeRestoreCommand, makeUndoCommand,
    makeRedoCommand, makeCheckCommand, makeReportCommand, makeDiffCommand, makeMergeCommand,
    makeRescueCommand, makeGitSetupCommand, makeCodesignCommand, makeDigestCommand, makeCompletionCommand};

// True for "-w" and the like, which the parser would interpret as options.
bool areOperationsToRemove(std::string_view text)
{
    return text.starts_with('-') && text.find_first_not_of("rwcmx", 1) == std::string_view::npos;
}

// The arguments as the parser expects them, last one first. It would take the word after "--name=" for the
// empty value, so that is split into two words; operations to be removed are joined with their option into
// one word.
std::vector<std::string> argumentsInReverse(int count, const char* const* texts)
{
    std::vector<std::string> arguments;
    for (int number = 1; number < count; ++number) {
        std::string argument = texts[number];
        if (argument == "--set-ops" && number + 1 < count && areOperationsToRemove(texts[number + 1]))
            argument.append("=").append(texts[++number]);
        const bool isEmptyValue = argument.starts_with("--") && argument.find('=') == argument.size() - 1;
        if (isEmptyValue)
            argument.pop_back();
        arguments.push_back(std::move(argument));
        if (isEmptyValue)
            arguments.emplace_back();
    }
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

// The parser with all commands, and the result of parsing.
class Program {
public:
    Program()
    {
        m_description.set_version_flag("--version", QUORVANE_VERSION);
        m_description.add_option("--root", m_root, "Put DIR in front of the product's own locations")
            ->envname("QUORVANE_ROOT")
            ->type_name("DIR");
        m_description
            .add_option("--lock-timeout", m_lockTimeout,
                "Wait at most so long for another program's write to end; 5 unless given")
            ->type_name("SECONDS")
            ->check(onlySeconds);
        m_description.require_subcommand(1);
        m_description.get_formatter()->label("SUBCOMMAND", "COMMAND");
        m_description.fallthrough();
        for (const auto& makeCommand : commandMakers)
            add(makeCommand());
    }

    // The exit status when nothing is left to do: after help, or a printed error; none when a command is to
    // run.
    std::optional<int> parse(int argumentCount, const char* const* arguments)
    {
        try {
            m_description.parse(argumentsInReverse(argumentCount, arguments));
            return std::nullopt;
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() != static_cast<int>(CLI::ExitCodes::Success)) {
                printUsageError(error);
                return ExitStatus::usage;
            }
            std::ostringstream answer;
            m_description.exit(error, answer, answer);
            Output output;
            output.write(answer.str());
            return output.finish() ? 0 : 1;
        }
    }

    int run()
    {
        const auto log = platform::makeProgramLog("quorvanectl", false);
        const platform::Locations locations(m_root, platform::loginName());
        return m_chosen->run({locations, *log, lockTimeoutOf(m_lockTimeout).value_or(usualLockTimeout)});
    }

private:
    // Says what is wrong with the arguments, and which help to read.
    void printUsageError(const CLI::ParseError& error) const
    {
        const CLI::App* app = &m_description;
        std::string called = app->get_name();
        while (!app->get_subcommands().empty()) {
            app = app->get_subcommands().front();
            called += " " + app->get_name();
        }
        printError(printable(problemOf(error)));
        std::fprintf(stderr, "Run '%s --help' for more information.\n", called.c_str());
    }

    // The parser misses a command or an argument before it looks at what stands in its place, and names
    // unexpected arguments in reverse.
    std::string problemOf(const CLI::ParseError& error) const
    {
        const bool hasCommand = !m_description.get_subcommands().empty();
        const std::vector<std::string> unexpected = m_description.remaining(true);
        const bool isMissing = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
        const bool isExtra = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
        if (!unexpected.empty() && (isExtra || isMissing)) {
            const std::string quoted = " '" + unexpected.front() + "'";
            if (unexpected.front().starts_with('-'))
                return "unknown option" + quoted;
            return (hasCommand ? "unexpected argument" : "unknown command") + quoted;
        }
        return isMissing && !hasCommand ? "a command is required" : error.what();
    }

    void add(std::unique_ptr<Command> added)
    {
        Command& command = *m_commands.emplace_back(std::move(added));
        command.addTo(m_description).callback([this, &command] {
            command.check();
            m_chosen = &command;
        });
    }

    CLI::App m_description{"Shows, changes and checks Quorvane rules without a window.", "quorvanectl"};
    std::string m_root;
    std::string m_lockTimeout;
    std::vector<std::unique_ptr<Command>> m_commands;
    Command* m_chosen = nullptr; // set by parsing
};

} // namespace

int runCommandLine(int argumentCount, const char* const* arguments)
{
    failureStatus = failureStatusOf(argumentCount, arguments);
    for (int number = 1; number < argumentCount; ++number) {
        if (!platform::isValidUtf8(arguments[number])) {
            printError("argument " + std::to_string(number) + " is not valid UTF-8");
            return ExitStatus::usage;
        }
    }
    try {
        Program program;
        const auto status = program.parse(argumentCount, arguments);
        return status ? *status : program.run();
    } catch (const std::bad_alloc&) {
        printError("out of memory");
        return statusWithoutMemory();
    }
}

int statusWithoutMemory()
{
    return failureStatus;
}

} // namespace quorvane::cli
