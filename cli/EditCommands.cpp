#include "cli/Commands.h"
#include "cli/OperationLetters.h"
#include "cli/Output.h"
#include "cli/UnwritableWarning.h"
#include "cli/UserDocument.h"
#include "rules/RuleCodes.h"
#include "workflow/RuleEdits.h"
#include "workflow/RuleFindings.h"

#include <string>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

// A rule as given on the command line.
struct RuleArguments {
    std::string ruleClass; // "allow", "deny" or "watch"
    std::string type; // "prefix", "path" or "suffix"
    std::string path;
    std::string process;
    std::string operations; // letters out of "rwcmx"
    std::string tag;
    std::string constraint;
};

rules::RuleRef recordOf(const RuleArguments& spelled)
{
    if (spelled.ruleClass == rules::policyClassDescription(rules::PolicyClass::watch)) {
        rules::WatchRuleFields fields;
        fields.policyType = rules::policyTypeForString(spelled.type);
        fields.path = spelled.path;
        fields.processName = spelled.process;
        fields.operations = rules::operationsForString(spelled.operations);
        fields.tag = spelled.tag;
        return std::make_shared<rules::WatchRule>(std::move(fields));
    }
    rules::PolicyRuleFields fields;
    fields.policyClass = rules::policyClassForString(spelled.ruleClass);
    fields.policyType = rules::policyTypeForString(spelled.type);
    fields.path = spelled.path;
    fields.processName = spelled.process;
    fields.operations = rules::operationsForString(spelled.operations);
    fields.tag = spelled.tag;
    fields.constraint = spelled.constraint;
    return std::make_shared<rules::PolicyRule>(std::move(fields));
}

// A command on the rule given by its arguments.
class RuleCommand : public Command {
public:
    void check() override
    {
        if (m_rule.ruleClass == "watch" && !m_rule.constraint.empty())
            throw CLI::ValidationError("--constraint", "a watch rule has no constraint");
    }

protected:
    void addRuleOptions(CLI::App& command)
    {
        command.add_option("CLASS", m_rule.ruleClass, "allow, deny or watch")
            ->required()
            ->check(CLI::IsMember({"allow", "deny", "watch"}));
        command.add_option("TYPE", m_rule.type, "prefix, path or suffix")
            ->required()
            ->check(CLI::IsMember({"prefix", "path", "suffix"}));
        command.add_option("PATH", m_rule.path, "The path that the rule is about")->required();
        command.add_option("PROCESS", m_rule.process, "The process that the rule is about")->required();
        command.add_option("OPS", m_rule.operations, "Operations: letters out of rwcmx")
            ->required()
            ->check(onlyOperationLetters);
        command.add_option("--constraint", m_rule.constraint, "What the program's code must carry");
    }

    RuleArguments m_rule;
};

class AddCommand : public RuleCommand {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand("add", "Add a rule to the current user's configuration");
        addRuleOptions(command);
        command.add_option("--tag", m_rule.tag, "A label");
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto user = openForWriting(context);
        if (!user)
            return ExitStatus::failed;
        const rules::RuleRef rule = recordOf(m_rule);
        const bool comesBack = readsBack(rule, user->lineEnds());
        if (!comesBack)
            printError("warning: " + workflow::findingText({workflow::FindingKind::doesNotReadBack, {}, {}}));
        user->expectUnwritableRules(comesBack ? 0 : 1);
        user->document().perform(workflow::additionOf(rule), {workflow::actionName("Add", 1)});
        return user->isWritten() ? ExitStatus::success : ExitStatus::failed;
    }
};

class DeleteCommand : public RuleCommand {
public:
    CLI::App& addTo(CLI::App& program) override
    {
        CLI::App& command = *program.add_subcommand(
            "delete", "Delete the first equal rule of the current user's configuration");
        addRuleOptions(command);
        return command;
    }

    int run(const CommandContext& context) override
    {
        const auto user = openForWriting(context);
        if (!user)
            return ExitStatus::failed;
        const rules::RuleRef wanted = recordOf(m_rule);
        const auto stored = user->store().firstEqualRule(wanted, {});
        if (!stored) {
            printError("no rule of the user is equal to " + workflow::ruleText(wanted));
            return ExitStatus::failed;
        }
        if (isSystemRule(*stored)) {
            printError("a system rule cannot be deleted: " + workflow::ruleText(wanted));
            return ExitStatus::failed;
        }
        user->document().perform(
            workflow::deletionOf(user->store(), {wanted}), {workflow::actionName("Delete", 1)});
        return user->isWritten() ? ExitStatus::success : ExitStatus::failed;
    }
};

} // namespace

std::unique_ptr<Command> makeAddCommand()
{
    return std::make_unique<AddCommand>();
}

std::unique_ptr<Command> makeDeleteCommand()
{
    return std::make_unique<DeleteCommand>();
}

} // namespace quorvane::cli
