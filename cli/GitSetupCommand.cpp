#include "cli/CommandFiles.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "platform/FileBytes.h"
#include "platform/PathComponents.h"
#include "platform/ProgramRun.h"
#include "platform/SystemError.h"
#include "workflow/RulesInput.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

using Setting = std::pair<const char*, const char*>;

constexpr std::array<Setting, 3> settings{{{"merge.quorvane.name", "rules of Quorvane"},
    {"merge.quorvane.driver", "quorvanectl merge %O %A %B"}, {"diff.quorvane.textconv", "quorvanectl list"}}};

constexpr std::array<std::string_view, 2> attributeLines{
    "*.quorv merge=quorvane diff=quorvane", "*.quorvane.rc merge=quorvane diff=quorvane"};

// The lines of `text` that are not ours, each with a line end.
std::string otherLines(std::string_view text)
{
    std::string others;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (std::find(attributeLines.begin(), attributeLines.end(), line) == attributeLines.end())
            others.append(line).append("\n");
    }
    return others;
}

std::string withoutLineEnd(std::string text)
{
    if (text.ends_with('\n'))
        text.pop_back();
    return text;
}

class GitSetupCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "git-setup", "Let git merge and compare rules files of this repository by their rules");
        command.footer(
            "Puts a merge driver and a text conversion into the configuration of git, and into its "
            "attributes that\n*.quorv and *.quorvane.rc use them. The status is 3 after a failure.");
        command.add_flag("--global", m_isGlobal, "In all repositories of the user");
        command.add_flag("--remove", m_removes, "Take both out again");
        return command;
    }

    int run(const CommandContext& /*context*/) override
    {
        const auto file = attributesFile();
        if (!file)
            return ExitStatus::failure;
        const bool isDone = std::all_of(settings.begin(), settings.end(), [this](const Setting& setting) {
            return configure(setting);
        }) && writeAttributes(*file);
        return isDone ? ExitStatus::success : ExitStatus::failure;
    }

private:
    // Runs git, which prints its own errors; none, with an error printed, when it cannot be run.
    static std::optional<platform::ProgramRun> git(const std::vector<std::string>& arguments)
    {
        platform::ProgramRun run = platform::runProgram("git", arguments);
        if (!run.error)
            return run;
        printError("cannot run git: " + platform::errorText(run.error));
        return std::nullopt;
    }

    std::vector<std::string> configArguments(std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"config", m_isGlobal ? "--global" : "--local"});
        return more;
    }

    bool configure(const Setting& setting) const
    {
        constexpr int wasNotThere = 5;
        const auto [name, value] = setting;
        const auto run = m_removes ? git(configArguments({"--unset-all", name}))
                                   : git(configArguments({"--replace-all", name, value}));
        return run && (run->status == 0 || (m_removes && run->status == wasNotThere));
    }

    // The attributes file of the repository or of the user; none, with an error printed, when it cannot be
    // determined.
    std::optional<std::string> attributesFile() const
    {
        const auto run = m_isGlobal ? git({"config", "--global", "--type=path", "core.attributesFile"})
                                    : git({"rev-parse", "--git-path", "info/attributes"});
        if (!run)
            return std::nullopt;
        std::string file = withoutLineEnd(run->output);
        if (m_isGlobal && file.empty())
            file = usualUserFile();
        if (run->status == 0 || m_isGlobal)
            return file;
        return std::nullopt; // git has printed why
    }

    static std::string usualUserFile()
    {
        const char* folder = std::getenv("XDG_CONFIG_HOME");
        if (folder != nullptr && *folder != '\0')
            return std::string(folder) + "/git/attributes";
        const char* home = std::getenv("HOME");
        return std::string(home == nullptr ? "" : home) + "/.config/git/attributes";
    }

    bool writeAttributes(const std::string& path) const
    {
        // The file may be a link to one elsewhere.
        std::error_code unresolved;
        const std::string resolved = std::filesystem::weakly_canonical(path, unresolved).string();
        const std::string file = unresolved ? path : resolved;
        std::string before;
        if (platform::isAnythingAt(file)) {
            const workflow::RulesInput input = workflow::RulesInput::read(file);
            if (input.problem()) {
                printError(printable(*input.problem()));
                return false;
            }
            before = input.bytes();
        }
        std::string after = otherLines(before);
        for (const std::string_view line : attributeLines)
            after.append(m_removes ? "" : line).append(m_removes ? "" : "\n");
        if (after == before)
            return true;
        std::filesystem::create_directories(platform::deletingLastPathComponent(file), unresolved);
        return writeResult(file, after);
    }

    bool m_isGlobal = false;
    bool m_removes = false;
};

} // namespace

std::unique_ptr<Command> makeGitSetupCommand()
{
    return std::make_unique<GitSetupCommand>();
}

} // namespace quorvane::cli
