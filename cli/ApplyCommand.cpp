#include "cli/CommandFiles.h"
#include "cli/Commands.h"
#include "cli/DifferenceOutput.h"
#include "cli/Output.h"
#include "cli/UserDocument.h"
#include "cli/WantedRules.h"
#include "platform/PathComponents.h"
#include "workflow/UnwritableRules.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

// The user's rules that a change does not affect.
std::vector<rules::RuleRef> untouchedRules(const rules::RuleManager& store, const rules::ChangeSet& change)
{
    std::unordered_set<const void*> touched;
    for (const rules::ChangeSet::Removal& removal : change.removed)
        touched.insert(addressOf(removal.rule));
    for (const rules::ChangeSet::Change& changed : change.changed)
        touched.insert(addressOf(changed.rule));
    std::vector<rules::RuleRef> rules = store.userRules();
    std::erase_if(rules, [&](const rules::RuleRef& rule) { return touched.contains(addressOf(rule)); });
    return rules;
}

class ApplyCommand : public Command {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "apply", "Make the current user's configuration hold the rules of a file, or none of them");
        command.footer(
            "FILE is a rules file, or JSON with one object a line as \"list --json\" prints it; \"-\" is the "
            "standard input.\nDoing it again changes nothing. Where JSON names no tag or creation time, the "
            "rule keeps its own.\nThe status is 3 after a failure; nothing was changed then, unless it "
            "says so.");
        command.add_flag("--dry-run", m_isDryRun, "Print what would be changed, and write nothing");
        command.add_flag("--json", m_asJson, "One JSON object for each rule, then one with the numbers");
        auto* absent = command.add_flag("--absent", m_isAbsent, "Remove the rules of FILE instead");
        command
            .add_option("--prune-tag", m_prunedTags,
                "Remove the rules with this tag that FILE lacks; may be given several times")
            ->type_name("TAG")
            ->take_all()
            ->allow_extra_args(false)
            ->excludes(absent);
        command.add_flag("--allow-empty", m_allowsEmpty, "Prune even when there is no rule in FILE");
        command.add_option("FILE", m_file, "A file of rules")->required();
        return command;
    }

    void check() override
    {
        if (std::find(m_prunedTags.begin(), m_prunedTags.end(), "") != m_prunedTags.end())
            throw CLI::ValidationError("--prune-tag", "an empty tag would be that of every untagged rule");
    }

    int run(const CommandContext& context) override
    {
        const auto wanted = readFile();
        const auto user = wanted ? open(context) : nullptr;
        if (!user)
            return ExitStatus::failure;
        const std::vector<rules::RuleRef> present = user->store().userRules();
        const workflow::RulesApplication application
            = m_isAbsent ? absenceOf(*wanted, present) : presenceOf(*wanted, present, m_prunedTags);
        const bool isWritten = !m_isDryRun && !application.change.isEmpty();
        if (const auto refusal = whyRefused(*user, application)) {
            printError("nothing was written: " + printable(*refusal));
            return ExitStatus::failure;
        }
        if (isWritten)
            perform(*user, application.change);
        if (!user->isWritten())
            return ExitStatus::failure;
        Output output;
        writeDifference(output, application.difference, m_asJson);
        writeOutcome(output, application.difference, {application.unchanged, isWritten}, m_asJson);
        return output.finish(isWritten) ? ExitStatus::success : ExitStatus::failure;
    }

private:
    std::unique_ptr<UserDocument> open(const CommandContext& context) const
    {
        return m_isDryRun ? openToLook(context) : openForWriting(context);
    }

    // None, with an error printed, when that fails.
    std::optional<std::vector<workflow::WantedRule>> readFile() const
    {
        const auto text = m_file == "-" ? readStandardInput() : readText(m_file);
        if (!text)
            return std::nullopt;
        WantedRules wanted = readWantedRules(text->bytes());
        if (wanted.rules.empty() && !m_prunedTags.empty() && !m_allowsEmpty && !wanted.problem)
            wanted.problem = WantedRules::Problem{
                std::nullopt, "expected a rule, since every rule with a pruned tag would go (--allow-empty)"};
        if (wanted.problem) {
            printError(place(wanted.problem->line) + ": " + printable(wanted.problem->text));
            return std::nullopt;
        }
        for (const std::size_t line : wanted.skippedOptions)
            printError(place(line) + ": an option is not applied");
        return std::move(wanted.rules);
    }

    // "'rules.rc', line 3"
    std::string place(std::optional<std::size_t> line) const
    {
        return "'" + (m_file == "-" ? standardInputName : printable(m_file)) + "'"
            + (line ? ", line " + std::to_string(*line) : "");
    }

    static std::optional<std::string> whyRefused(
        UserDocument& user, const workflow::RulesApplication& application)
    {
        const rules::LineEnds lineEnds = user.lineEnds();
        for (const rules::ChangeSet::Addition& addition : application.change.added) {
            if (auto reason = workflow::whyUnwritable(addition.value, lineEnds))
                return reason;
        }
        for (const rules::ChangeSet::Change& change : application.change.changed) {
            if (auto reason = workflow::whyUnwritable(change.after, lineEnds))
                return reason;
        }
        if (application.change.isEmpty())
            return std::nullopt;
        const rules::RulesFileText present
            = rules::RulesFileText::read(user.store().locations().userRulesFile());
        return workflow::whyRewritingCuts(
            untouchedRules(user.store(), application.change), present.text(), lineEnds);
    }

    void perform(UserDocument& user, const rules::ChangeSet& change) const
    {
        const std::string name = m_file == "-" ? "Rules" : std::string(platform::lastPathComponent(m_file));
        user.document().perform(change, {.action = "Apply " + name, .refusesCuts = true});
    }

    std::string m_file;
    std::vector<std::string> m_prunedTags;
    bool m_isDryRun = false;
    bool m_asJson = false;
    bool m_isAbsent = false;
    bool m_allowsEmpty = false;
};

} // namespace

std::unique_ptr<Command> makeApplyCommand()
{
    return std::make_unique<ApplyCommand>();
}

} // namespace quorvane::cli
