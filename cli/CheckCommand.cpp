#include "cli/Commands.h"
#include "cli/FindingOptions.h"
#include "cli/Output.h"
#include "cli/PlaceOptions.h"
#include "cli/RuleJson.h"
#include "cli/RuleSelection.h"
#include "cli/Sarif.h"
#include "platform/Locations.h"
#include "platform/OrderedWork.h"
#include "rules/RulesFile.h"
#include "workflow/FileFindings.h"

#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

enum class Form { text, json, sarif };

std::optional<std::string_view> unlessEmpty(std::string_view text)
{
    return text.empty() ? std::nullopt : std::optional(text);
}

void appendJson(
    std::string& out, const std::optional<std::string>& file, const workflow::FileFinding& finding)
{
    JsonLine line(out);
    line.add("row", finding.row);
    line.add("finding", findingName(finding.kind));
    line.add("rule", finding.rule);
    line.add("coveredBy", unlessEmpty(finding.other));
    line.add("reason", unlessEmpty(finding.reason));
    line.add("file", file);
    line.finish();
}

void appendText(std::string& out, const std::string& before, const workflow::FileFinding& finding)
{
    out.append(before).append(finding.row ? "row " : "line ");
    out.append(std::to_string(finding.row.value_or(finding.line))).append(": ");
    appendPrintable(out, finding.rule);
    out.append("\n    ");
    appendPrintable(out, finding.text);
    out.append("\n");
}

// The findings of one file, ready to be printed.
struct CheckedFile {
    std::string printed;
    std::vector<std::string> problems; // why some of its rules were not read
    bool areProblemsReported = false; // printed on standard error already
    bool isFaultless = true;
};

// Why rules that the file may contain are not in its text; none when the text is complete.
std::optional<std::string> whyUnread(const std::string& file, const rules::RulesFileText& text)
{
    struct stat status { };
    if (text.identity() == platform::FileIdentity::missing())
        return "there is no file '" + file + "'";
    if (text.isNothing() && stat(file.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        const char* kind = S_ISFIFO(status.st_mode) ? "a pipe" : "no regular file";
        return "'" + file + "' is " + kind + ": nothing of it is read";
    }
    return text.unreadReason();
}

class Checker {
public:
    // `output`: where findings of the only file are printed as they are found, which may be many times as
    // long as the file; null for several files, whose findings are kept until it is their turn.
    Checker(const CommandContext& context, Form form, Output* output, workflow::FindingSearch search)
        : m_context(context)
        , m_form(form)
        , m_output(output)
        , m_search{std::move(search), form == Form::sarif}
    {
    }

    // Both look for joined lines before they read the rules: the text and its rules together would take half
    // as much memory again.

    // A named file. Does not throw.
    CheckedFile checkNamed(const std::string& file) const noexcept
    {
        CheckedFile checked;
        try {
            auto text = rules::RulesFileText::read(file, m_context.lockTimeout);
            const auto problem = whyUnread(file, text);
            const auto joined = joinedLineFindings(text.bytes(), m_search);
            const auto discard = [&](std::string_view part) {
                if (!m_search.withLines)
                    text.discard(part);
            };
            const auto store
                = workflow::storeOfText(text.text(), m_context.locations, m_context.log, discard);
            useFileFindings(*store, text.bytes(), m_search, joined, appendTo(checked, file));
            if (problem)
                addProblem(*problem, checked);
        } catch (const std::bad_alloc&) {
            checked = {};
            addProblem("'" + file + "': out of memory", checked);
        }
        return checked;
    }

    // The current user's configuration.
    CheckedFile checkConfiguration() const
    {
        CheckedFile checked;
        auto text = std::make_unique<rules::RulesFileText>(
            rules::RulesFileText::read(m_context.locations.userRulesFile(), m_context.lockTimeout));
        const std::optional<std::string> unreadReason = text->unreadReason();
        const auto joined = joinedLineFindings(text->bytes(), m_search);
        if (!m_search.withLines)
            text.reset();
        const OpenedStore opened = openStore({}, m_context);
        useFileFindings(
            opened.store, text ? text->bytes() : "", m_search, joined, appendTo(checked, std::nullopt));
        if (opened.isComplete && !opened.hasFailed)
            return checked;
        addProblem(unreadReason.value_or("not all rules could be read"), checked);
        checked.areProblemsReported = true;
        return checked;
    }

private:
    using UseFinding = std::function<void(const workflow::FileFinding&)>;

    static void addProblem(std::string problem, CheckedFile& checked)
    {
        checked.problems.push_back(std::move(problem));
        checked.isFaultless = false;
    }

    // What appends a finding, or prints it where it can be. `file` is the name as given.
    UseFinding appendTo(CheckedFile& checked, const std::optional<std::string>& file) const
    {
        const std::string address
            = m_form == Form::sarif ? fileAddress(file.value_or(m_context.locations.userRulesFile())) : "";
        const std::string before = m_output == nullptr ? printable(*file) + ": " : "";
        return [this, &checked, file, address, before](const workflow::FileFinding& finding) {
            std::string& out = checked.printed;
            if (m_form == Form::json)
                appendJson(out, file, finding);
            else if (m_form == Form::text)
                appendText(out, before, finding);
            else
                out.append(checked.isFaultless ? "" : ",\n").append(sarifResult(address, finding));
            checked.isFaultless = false;
            if (m_output == nullptr)
                return;
            m_output->write(out);
            out.clear();
        };
    }

    const CommandContext& m_context;
    const Form m_form;
    Output* const m_output;
    const workflow::FileSearch m_search;
};

// Prints the findings, file by file.
class CheckPrinter {
public:
    explicit CheckPrinter(Form form)
        : m_form(form)
    {
        if (m_form == Form::sarif)
            m_output.write(sarifBegin());
    }

    void print(const std::string& file, const CheckedFile& checked)
    {
        m_isFaultless = m_isFaultless && checked.isFaultless;
        if (m_form == Form::sarif && !checked.printed.empty())
            m_output.write(std::exchange(m_separator, ",\n"));
        m_output.write(checked.printed);
        for (const std::string& problem : checked.problems) {
            if (!checked.areProblemsReported)
                printError(problem);
            m_notifications.append(m_notifications.empty() ? "" : ",")
                .append(sarifNotification(fileAddress(file), problem));
        }
    }

    Output& output() { return m_output; }

    // Returns the exit status.
    int finish()
    {
        if (m_form == Form::sarif)
            m_output.write(sarifEnd(m_notifications));
        return m_output.finish() && m_isFaultless ? ExitStatus::success : ExitStatus::findings;
    }

private:
    const Form m_form;
    Output m_output;
    bool m_isFaultless = true;
    std::string m_separator;
    std::string m_notifications;
};

class CheckCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("check",
            "Find redundant rules, programs that are gone or do not match, missing paths and rules that do "
            "not read back");
        auto* json = command.add_flag("--json", m_asJson, "One JSON object a line");
        command.add_flag("--sarif", m_asSarif, "A log for review tools, in SARIF 2.1.0")->excludes(json);
        m_findings.addTo(command);
        m_place.addTo(command);
        command.add_option(
            "FILE", m_files, "Rules files to check instead of the current user's configuration");
        return command;
    }

    void check() override { m_kinds = m_findings.kinds(m_place.isNowhere()); }

    int run(const CommandContext& context) override
    {
        const auto place = m_place.open();
        if (!place)
            return ExitStatus::failed;
        const Form form = m_asSarif ? Form::sarif : m_asJson ? Form::json : Form::text;
        CheckPrinter printer(form);
        const Checker checker(
            context, form, m_files.size() > 1 ? nullptr : &printer.output(), {m_kinds, *place});
        if (m_files.empty())
            printer.print(context.locations.userRulesFile(), checker.checkConfiguration());
        platform::makeInOrder(
            m_files.size(), [&](std::size_t number) { return checker.checkNamed(m_files[number]); },
            [&](std::size_t number, const CheckedFile& checked) { printer.print(m_files[number], checked); });
        return printer.finish();
    }

private:
    bool m_asJson = false;
    bool m_asSarif = false;
    FindingOptions m_findings;
    PlaceOptions m_place;
    std::vector<std::string> m_files;
    workflow::FindingKinds m_kinds;
};

} // namespace

std::unique_ptr<Command> makeCheckCommand()
{
    return std::make_unique<CheckCommand>();
}

} // namespace quorvane::cli
