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

// Deliberate: told by the display names, while the table bands its rows by the group identity; and a policy
// rule below a watch rule counts as no head.
bool headsItsGroup(const RuleRef& rule, const RuleRef* above)
{
    const PolicyRule* policy = policyRuleIn(rule);
    if (policy == nullptr)
        return false;
    if (above == nullptr)
        return true;
    const PolicyRule* previous = policyRuleIn(*above);
    return previous != nullptr && applicationNameForRule(*previous) != applicationNameForRule(*policy);
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

TableChange RuleCommands::deleteRow(const RuleRow& row, const RuleRef* above)
{
    if (isSystemRule(row.rule))
        return {.notice = systemRuleNotice("Cannot Delete System Rule", "deleted")};
    m_run.g_dirty = 1;
    if (!deleteFromStore(row.rule))
        return {};
    write();
    return {.removedRows = {row.row}, .headedItsGroup = headsItsGroup(row.rule, above)};
}

TableChange RuleCommands::deleteRows(const std::vector<RuleRow>& rows)
{
    TableChange change;
    std::vector<RuleRef> rules;
    for (const auto& [row, rule] : rows) {
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

std::optional<Notice> RuleCommands::setTag(const std::optional<RuleRow>& row, const std::string& tag)
{
    std::optional<Notice> notice;
    if (row) {
        if (isSystemRule(row->rule))
            notice = systemRuleNotice("Cannot Edit System Rules", "edited");
        else
            std::visit([&](const auto& record) { record->setTag(tag); }, row->rule);
        if (const PolicyRule* policy = policyRuleIn(row->rule))
            logTag(m_log, *policy, row->row);
    }
    m_run.g_dirty = 1;
    write();
    return notice;
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
