#include "workflow/RuleCommands.h"

#include "platform/Log.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/RunState.h"

#include <sstream>
#include <utility>

namespace quorvane {

namespace {

constexpr std::uint32_t readWriteCreate = 7;

Notice systemRuleNotice(const char* header, const char* done)
{
    return {header,
        std::string("System rules cannot be ") + done
            + " using this tool. Please disable Quorvane and edit the system rules directly to make "
              "changes."};
}

void logTag(Log& log, const PolicyRule& rule, std::size_t row)
{
    std::ostringstream line;
    line << "set tag to '" << rule.tag().written() << "' for row " << row << " rule "
         << rule.processName().written() << " / " << rule.path().written();
    log.write(line.str());
}

} // namespace

RuleCommands::RuleCommands(RuleManager& store, RunState& run, Log& log)
    : m_store(store)
    , m_run(run)
    , m_log(log)
{
}

PolicyRulePtr RuleCommands::newPolicy()
{
    return std::make_shared<PolicyRule>(
        PolicyRuleFields{.path = "", .processName = "any", .operations = readWriteCreate});
}

WatchRulePtr RuleCommands::newWatch()
{
    return std::make_shared<WatchRule>(
        WatchRuleFields{.path = "", .processName = "any", .operations = readWriteCreate});
}

PolicyRulePtr RuleCommands::newPolicyLike(const RuleRef& rule)
{
    PolicyRuleFields fields{.path = "", .operations = readWriteCreate};
    fields.processName = askRule(rule, [](const auto& record) { return record.processName(); });
    if (const PolicyRule* policy = policyRuleIn(rule))
        fields.constraint = policy->constraint();
    return std::make_shared<PolicyRule>(std::move(fields));
}

TableChange RuleCommands::deleteRow(std::size_t row, bool includeSystemRules)
{
    const RuleRef rule = m_store.ruleAtIndex(row, includeSystemRules);
    if (isSystemRule(rule))
        return {.notice = systemRuleNotice("Cannot Delete System Rule", "deleted")};
    m_run.g_dirty = 1;
    const PolicyRule* policy = policyRuleIn(rule);
    const bool headedItsGroup = policy != nullptr && headsItsGroup(*policy, row, includeSystemRules);
    if (!deleteFromStore(rule))
        return {};
    write();
    TableChange change{.removedRows = {row}};
    if (headedItsGroup && m_store.totalRules(includeSystemRules) > row)
        change.newGroupHead = row;
    return change;
}

TableChange RuleCommands::deleteRows(const std::vector<std::size_t>& rows, bool includeSystemRules)
{
    TableChange change;
    std::vector<RuleRef> rules;
    for (const std::size_t row : rows) {
        const RuleRef& rule = m_store.ruleAtIndex(row, includeSystemRules);
        if (isSystemRule(rule)) {
            change.notice = systemRuleNotice("Cannot Delete System Rules", "deleted");
            continue;
        }
        if (m_log.isListening())
            m_log.write("-[RulesEditorTableController deleteRows:] deleting row " + std::to_string(row));
        rules.push_back(rule);
        change.removedRows.push_back(row);
    }
    for (const RuleRef& rule : rules)
        deleteFromStore(rule);
    m_run.g_dirty = 1;
    write();
    return change;
}

std::optional<Notice> RuleCommands::setTag(
    std::optional<std::size_t> row, const std::string& tag, bool includeSystemRules)
{
    std::optional<Notice> notice;
    if (row) {
        const RuleRef rule = m_store.ruleAtIndex(*row, includeSystemRules);
        if (isSystemRule(rule))
            notice = systemRuleNotice("Cannot Edit System Rules", "edited");
        else
            std::visit([&](const auto& record) { record->setTag(tag); }, rule);
        if (const PolicyRule* policy = policyRuleIn(rule))
            logTag(m_log, *policy, *row);
    }
    m_run.g_dirty = 1;
    write();
    return notice;
}

// Deliberate: told by the display names, while the table bands its rows by the group identity; and a policy
// rule below a watch rule counts as no head.
bool RuleCommands::headsItsGroup(const PolicyRule& rule, std::size_t row, bool includeSystemRules) const
{
    if (row == 0)
        return true;
    const PolicyRule* previous = policyRuleIn(m_store.ruleAtIndex(row - 1, includeSystemRules));
    return previous != nullptr && applicationNameForRule(*previous) != applicationNameForRule(rule);
}

bool RuleCommands::deleteFromStore(const RuleRef& rule)
{
    if (const PolicyRule* policy = policyRuleIn(rule))
        return m_store.deletePolicyRule(*policy);
    return m_store.deleteWatchRule(*std::get<WatchRulePtr>(rule));
}

void RuleCommands::write()
{
    m_store.writeToCurrentUserConfiguration();
    m_run.internalWrite = true;
}

} // namespace quorvane
