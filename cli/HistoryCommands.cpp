#include "cli/Commands.h"
#include "cli/DifferenceOutput.h"
#include "cli/Output.h"
#include "cli/RuleJson.h"
#include "cli/UserDocument.h"
#include "history/Journal.h"
#include "workflow/DifferenceText.h"
#include "workflow/DocumentTexts.h"
#include "workflow/VersionChanges.h"
#include "workflow/VersionDifference.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

std::unique_ptr<history::Journal> journalOf(const CommandContext& context)
{
    return history::Journal::open(
        history::defaultStateFolder(), context.locations.userRulesFile(), {}, context.log);
}

// True when the journal's last operation succeeded; prints its problem otherwise.
bool hasAnswered(history::Journal& journal)
{
    const auto notice = journal.takeNotice();
    if (notice)
        printError(*notice);
    if (journal.problem())
        printError("the history cannot be read: " + *journal.problem());
    return !notice && !journal.problem();
}

const char* stateName(history::VersionState state)
{
    switch (state) {
    case history::VersionState::done:
        return "done";
    case history::VersionState::underWay:
        return "under way";
    case history::VersionState::recovered:
        return "recovered";
    }
    return "";
}

Json jsonWords(const std::optional<std::string>& words)
{
    return words ? Json(*words) : Json(nullptr);
}

std::string jsonVersion(const history::JournalVersion& version)
{
    return jsonLine(
        {{"version", version.number}, {"time", version.time}, {"program", jsonWords(version.program)},
            {"action", version.action ? Json(workflow::actionText(version)) : Json(nullptr)},
            {"rules", version.rules}, {"added", version.added}, {"removed", version.removed},
            {"changed", version.changed}, {"bytes", version.bytes}, {"sha256", version.sha256},
            {"state", stateName(version.state)}});
}

std::string programName(const history::JournalVersion& version)
{
    return printable(version.program.value_or("another program"));
}

// How wide the columns of a table of versions are.
struct VersionWidths {
    std::size_t number = 0;
    std::size_t program = 0;
};

VersionWidths widthsOf(const std::vector<history::JournalVersion>& versions)
{
    VersionWidths widths;
    for (const history::JournalVersion& version : versions) {
        widths.number = std::max(widths.number, std::to_string(version.number).size());
        widths.program = std::max(widths.program, programName(version).size());
    }
    return widths;
}

// " 3  2026-11-21 09:30:00 UTC  quorvanectl      Delete Rule  (11 rules; 1 rule removed)"
std::string printedVersion(const history::JournalVersion& version, VersionWidths widths)
{
    std::string number = std::to_string(version.number);
    number.insert(0, widths.number - number.size(), ' ');
    std::string program = programName(version);
    program.resize(widths.program, ' ');
    std::string line = number + "  " + workflow::timeText(static_cast<std::uint64_t>(version.time)) + "  "
        + program + "  " + printable(workflow::actionText(version)) + "  ("
        + workflow::countedRules(version.rules) + "; "
        + workflow::changeSummary(version.added, version.removed, version.changed) + ")";
    if (version.state != history::VersionState::done)
        line.append(", ").append(stateName(version.state));
    return line + "\n";
}

// False, with an error printed, when there is no such version.
bool isThere(history::Journal& journal, std::int64_t number)
{
    const auto version = journal.version(number);
    if (!hasAnswered(journal))
        return false;
    if (!version)
        printError("there is no version " + std::to_string(number));
    return version.has_value();
}

int nothingTo(const char* step, const CommandContext& context)
{
    const auto journal = journalOf(context);
    journal->newest();
    if (hasAnswered(*journal))
        printError(std::string("there is nothing to ") + step);
    return ExitStatus::failure;
}

int answer(const char* what, const std::optional<std::string>& name, const UserDocument& user)
{
    if (!user.isWritten())
        return ExitStatus::failure;
    Output output;
    output.write(what + printable(name.value_or("")) + "\n");
    return output.finish(true) ? ExitStatus::success : ExitStatus::failure;
}

std::string onlyVersionNumber(const std::string& text)
{
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? "" : "'" + text + "' is not the number of a version";
}

class HistoryCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command
            = *program.add_subcommand("history", "Print the versions of the user's rules, newest first");
        command.add_flag("--json", m_asJson, "One JSON object a line");
        CLI::App& show = *command.add_subcommand("show", "Print what a version changed");
        show.add_flag("--json", m_asJson, "One JSON object a line");
        show.add_option("N", m_version, "The number of the version")->required()->check(onlyVersionNumber);
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto journal = journalOf(context);
        return m_version ? show(*journal, *m_version) : list(*journal);
    }

private:
    int list(history::Journal& journal) const
    {
        const std::vector<history::JournalVersion> versions = journal.versions();
        if (!hasAnswered(journal))
            return ExitStatus::failure;
        const VersionWidths widths = widthsOf(versions);
        Output output;
        for (const history::JournalVersion& version : versions)
            output.write(m_asJson ? jsonVersion(version) : printedVersion(version, widths));
        return output.finish() ? ExitStatus::success : ExitStatus::failure;
    }

    int show(history::Journal& journal, std::int64_t number) const
    {
        if (!isThere(journal, number))
            return ExitStatus::failure;
        const auto found = workflow::differenceOfVersion(journal, number);
        if (!found) {
            printError("what version " + std::to_string(number)
                + " changed is no longer known: it or the versions before it cannot be read");
            return ExitStatus::failure;
        }
        if (!found->isWholeStory)
            printError("the version before it is no longer kept; this is what changed since version "
                + std::to_string(*found->since));
        Output output;
        writeDifference(output, found->difference, m_asJson);
        if (!m_asJson)
            output.write(workflow::differenceSummary(found->difference) + "\n");
        return output.finish() ? ExitStatus::success : ExitStatus::failure;
    }

    std::optional<std::int64_t> m_version;
    bool m_asJson = false;
};

class RestoreCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command
            = *program.add_subcommand("restore", "Put an earlier version of the user's rules in force again");
        command.add_option("N", m_version, "The number of the version, as history prints it")
            ->required()
            ->check(onlyVersionNumber);
        return command;
    }

    int run(const CommandContext& context) override
    {
        if (!isThere(*journalOf(context), m_version))
            return ExitStatus::failure;
        const auto user = openToRestore(context);
        if (!user->document().restore(m_version)) {
            printError("version " + std::to_string(m_version) + " can no longer be read");
            return ExitStatus::failure;
        }
        return user->isWritten() ? ExitStatus::success : ExitStatus::failure;
    }

private:
    std::int64_t m_version = 0;
};

class UndoCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        return *program.add_subcommand("undo", "Take back the newest action that is not undone");
    }

    int run(const CommandContext& context) override
    {
        const auto user = openToUndo(context);
        if (!user)
            return ExitStatus::failure;
        const auto name = user->document().undoName();
        return user->document().undo() ? answer("Undone: ", name, *user) : nothingTo("undo", context);
    }
};

class RedoCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        return *program.add_subcommand("redo", "Do again what was undone last");
    }

    int run(const CommandContext& context) override
    {
        const auto user = openToUndo(context);
        if (!user)
            return ExitStatus::failure;
        const auto name = user->document().redoName();
        return user->document().redo() ? answer("Done again: ", name, *user) : nothingTo("redo", context);
    }
};

} // namespace

std::unique_ptr<Command> makeHistoryCommand()
{
    return std::make_unique<HistoryCommand>();
}

std::unique_ptr<Command> makeRestoreCommand()
{
    return std::make_unique<RestoreCommand>();
}

std::unique_ptr<Command> makeUndoCommand()
{
    return std::make_unique<UndoCommand>();
}

std::unique_ptr<Command> makeRedoCommand()
{
    return std::make_unique<RedoCommand>();
}

} // namespace quorvane::cli
