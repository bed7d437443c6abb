#include "cli/CommandLine.h"

#include "cli/Commands.h"
#include "cli/Output.h"
#include "platform/Account.h"
#include "platform/Log.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <iostream>
#include <sstream>
#include <system_error>

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

constexpr int usageError = 2;

// Everything that the arguments can say.
struct Arguments {
    std::string root;
    RuleSelection selection;
    std::vector<std::string> sort;
    std::string file;
    bool asJson = false;
    std::string out;
    std::vector<std::size_t> rows;
    SpelledRule rule;
    std::vector<std::string> programs;
    std::vector<std::string> spelledPids;
    std::vector<std::int32_t> pids;
};

// The arguments as the parser takes them, last one first. It would take the word after "--name=" for the
// value that is empty there, so that is made two words.
std::vector<std::string> argumentsInReverse(int count, const char* const* texts)
{
    std::vector<std::string> arguments;
    for (int number = 1; number < count; ++number) {
        std::string argument = texts[number];
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

SortDescriptor sortDescriptor(const std::string& spelled)
{
    constexpr std::string_view descending = ":desc";
    const bool isDescending = spelled.ends_with(descending);
    const std::string name = spelled.substr(0, spelled.size() - (isDescending ? descending.size() : 0));
    const auto key = sortKeyNamed(name);
    if (!key)
        throw CLI::ValidationError("--sort", "'" + name + "' is not a property of the rules");
    return {*key, !isDescending};
}

std::string onlyRowNumber(const std::string& text)
{
    std::size_t row = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, row);
    return error == std::errc() && stop == end ? "" : "'" + text + "' is not the number of a row";
}

std::int32_t pidSpelled(const std::string& text)
{
    std::int32_t pid = -1;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, pid);
    if (error != std::errc() || stop != end || pid < 0)
        throw CLI::ValidationError("--pid", "'" + text + "' is not the number of a process");
    return pid;
}

std::string onlyOperationLetters(const std::string& text)
{
    return text.find_first_not_of("rwcmx") == std::string::npos ? "" : "OPS must be letters out of rwcmx";
}

void addFileOption(CLI::App& command, Arguments& arguments)
{
    command.add_option(
        "FILE", arguments.file, "A rules file to use instead of the current user's configuration");
}

void addSelectionOptions(CLI::App& command, Arguments& arguments)
{
    command.add_flag("--system", arguments.selection.includeSystemRules, "Include system rules");
    command.add_option("--filter", arguments.selection.filter, "Only rules that contain this text");
    command
        .add_option(
            "--sort", arguments.sort, "Sort by KEY or KEY:desc; the first one given is the primary key")
        ->type_name("KEY[:desc]")
        ->take_all()
        ->allow_extra_args(false);
}

void addRuleOptions(CLI::App& command, Arguments& arguments)
{
    SpelledRule& rule = arguments.rule;
    command.add_option("CLASS", rule.ruleClass, "allow, deny or watch")
        ->required()
        ->check(CLI::IsMember({"allow", "deny", "watch"}));
    command.add_option("TYPE", rule.type, "prefix, path or suffix")
        ->required()
        ->check(CLI::IsMember({"prefix", "path", "suffix"}));
    command.add_option("PATH", rule.path, "The path that the rule is about")->required();
    command.add_option("PROCESS", rule.process, "The process that the rule is about")->required();
    command.add_option("OPS", rule.operations, "Operations: letters out of rwcmx")
        ->required()
        ->check(onlyOperationLetters);
    command.add_option("--constraint", rule.constraint, "What the program's code must carry");
}

using Run = std::function<int(const CommandContext&)>;

using AddCommand = std::function<CLI::App*(const char* name, const char* help, Run command)>;

// The commands that ask about program files and no rules.
void addProgramCommands(const AddCommand& add, Arguments& arguments)
{
    auto* codesign
        = add("codesign", "Print what the code signature of macOS programs says", [&](const CommandContext&) {
              return codesignCommand(arguments.programs, arguments.pids, arguments.asJson);
          });
    codesign->footer(
        "States: 1 unsigned, 2 signed and valid, 3 failed or invalid, 4 not verifiable, 5 unsupported, "
        "6 cannot tell.\nThe strict state covers the whole program file; the resources of a bundle "
        "are in neither. The network is never asked.");
    codesign->add_flag("--json", arguments.asJson, "One JSON object a line");
    auto* paths = codesign->add_option("PATH", arguments.programs, "A program file or a bundle");
    codesign->add_option("--pid", arguments.spelledPids, "A running process")
        ->type_name("N")
        ->excludes(paths);

    auto* digest = add("digest", "Print the SHA-1 and SHA-256 of files",
        [&](const CommandContext&) { return digestCommand(arguments.programs); });
    digest->footer(
        "Two lines a file, as digest tools check them: \"SHA1 (PATH) = ...\" and \"SHA256 (PATH) = "
        "...\",\nin lowercase hexadecimal.");
    digest->add_option("PATH", arguments.programs, "A file")->required();
}

void addCommands(CLI::App& program, Arguments& arguments, Run& run)
{
    const auto add = [&](const char* name, const char* help, const Run& command) {
        CLI::App* added = program.add_subcommand(name, help);
        added->callback([&run, command] { run = command; });
        return added;
    };
    auto* list = add("list", "Print the rules", [&](const CommandContext& context) {
        return listCommand(context, arguments.selection, arguments.asJson);
    });
    list->add_flag("--json", arguments.asJson, "One JSON object a line");
    list->add_flag("--label-system", arguments.selection.labelAsSystem, "Read FILE as a system rules file");
    addSelectionOptions(*list, arguments);
    addFileOption(*list, arguments);

    auto* options = add("options", "Print the options of the configuration",
        [&](const CommandContext& context) { return optionsCommand(context, arguments.asJson); });
    options->add_flag("--json", arguments.asJson, "One JSON object a line");

    auto* exported = add("export", "Write rules to an exchange file", [&](const CommandContext& context) {
        return exportCommand(context, arguments.selection, arguments.out, arguments.rows);
    });
    exported->add_option("OUT", arguments.out, "The file to write")->required();
    exported->add_option("--row", arguments.rows, "Write this row of the list; may be given several times")
        ->take_all()
        ->allow_extra_args(false)
        ->check(onlyRowNumber);
    addSelectionOptions(*exported, arguments);
    addFileOption(*exported, arguments);

    auto* added = add("add", "Add a rule to the current user's configuration",
        [&](const CommandContext& context) { return addCommand(context, arguments.rule); });
    addRuleOptions(*added, arguments);
    added->add_option("--tag", arguments.rule.tag, "A label");

    auto* deleted = add("delete", "Delete the first equal rule of the current user's configuration",
        [&](const CommandContext& context) { return deleteCommand(context, arguments.rule); });
    addRuleOptions(*deleted, arguments);

    auto* imported = add("import", "Add the rules of an exchange file to the current user's configuration",
        [&](const CommandContext& context) {
            return importCommand(context, arguments.file, arguments.asJson);
        });
    imported->footer(
        "Rules without a tag get the file's name as their tag; rules without a constraint are bound "
        "to their program.\n--json prints one object: \"imported\", the rules of the file, and "
        "\"added\", those that were not there yet.\nThe pending suggestions of the fail-safe file "
        "are dropped, as after every import.");
    imported->add_option("FILE", arguments.file, "An exchange file")->required();
    imported->add_flag("--json", arguments.asJson, "Print a JSON object");

    auto* check = add("check",
        "Find redundant rules, programs that are gone or do not match, missing paths and rules that do not "
        "read "
        "back",
        [&](const CommandContext& context) {
            return checkCommand(context, arguments.selection, arguments.asJson);
        });
    check->add_flag("--json", arguments.asJson, "One JSON object a line");
    addFileOption(*check, arguments);

    addProgramCommands(add, arguments);
}

void finishArguments(Arguments& arguments, const CLI::App& program)
{
    for (const std::string& spelled : arguments.sort)
        arguments.selection.sort.push_back(sortDescriptor(spelled));
    for (const std::string& spelled : arguments.spelledPids)
        arguments.pids.push_back(pidSpelled(spelled));
    const CLI::App& command = *program.get_subcommands().front();
    if (command.get_name() == "codesign" && arguments.programs.empty() && arguments.pids.empty())
        throw CLI::RequiredError("PATH or --pid");
    const CLI::Option* file = command.get_option_no_throw("FILE");
    if (file != nullptr && file->count() > 0)
        arguments.selection.file = arguments.file;
    if (arguments.selection.labelAsSystem && !arguments.selection.file)
        throw CLI::ValidationError("--label-system", "says how FILE is read, and there is none");
    if (arguments.rule.ruleClass == "watch" && !arguments.rule.constraint.empty())
        throw CLI::ValidationError("--constraint", "a watch rule has no constraint");
}

} // namespace

int runCommandLine(int argumentCount, const char* const* argumentTexts)
{
    for (int number = 1; number < argumentCount; ++number) {
        if (!isValidUtf8(argumentTexts[number])) {
            complain("argument " + std::to_string(number) + " is not valid UTF-8");
            return usageError;
        }
    }
    Arguments arguments;
    Run run;
    CLI::App program("Shows, changes and checks Quorvane rules without a window.", "quorvanectl");
    program.set_version_flag("--version", QUORVANE_VERSION);
    program.add_option("--root", arguments.root, "Put DIR in front of the product's own locations")
        ->envname("QUORVANE_ROOT")
        ->type_name("DIR");
    program.require_subcommand(1);
    program.fallthrough();
    addCommands(program, arguments, run);
    try {
        program.parse(argumentsInReverse(argumentCount, argumentTexts));
        finishArguments(arguments, program);
    } catch (const CLI::ParseError& error) {
        std::ostringstream answer;
        if (program.exit(error, answer, std::cerr) != 0)
            return usageError;
        Output output;
        output.write(answer.str());
        return output.finish() ? 0 : 1;
    }
    const auto log = makeProgramLog("quorvanectl", false);
    const Locations locations(arguments.root, loginName());
    return run({locations, *log});
}

} // namespace quorvane
