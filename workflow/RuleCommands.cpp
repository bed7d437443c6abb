#include "workflow/RuleCommands.h"

#include "platform/Log.h"
#include "rules/ApplicationIdentity.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

#include <algorithm>
#include <numeric>
#include <sstream>
#include <unordered_set>
#include <utility>

namespace quorvane::workflow {

namespace {

constexpr std::uint32_t readWriteCreate = 7;

Notice systemRuleNotice(const char* header, const char* done)
{
    return {header,
        std::string("System rules cannot be ") + done
            + " using this tool. Please disable Quorvane and edit the system rules directly to make "
              "changes."};
}

void logTag(platform::Log& log, const rules::PolicyRule& rule, std::size_t row)
{
    std::ostringstream line;
    line << "set tag to '" << rule.tag().written() << "' for row " << row << " rule "
         << rule.processName().written() << " / " << rule.path().written();
    log.write(line.str());
}

// Deliberate: decided by the display names, while the table bands its rows by the group identity; and a
// policy rule below a watch rule is not a head.
bool headsItsGroup(const rules::RuleRef& rule, const rules::RuleRef* above)
{
    const rules::PolicyRule* policy = policyRuleIn(rule);
    if (policy == nullptr)
        return false;
    if (above == nullptr)
        return true;
    const rules::PolicyRule* previous = policyRuleIn(*above);
    return previous != nullptr && applicationNameForRule(*previous) != applicationNameForRule(*policy);
}

// The rules to be deleted that stay because equal ones are deleted instead.
std::vector<rules::RuleRef> remainingOf(
    const rules::ChangeSet& deletion, const std::vector<rules::RuleRef>& rules)
{
    // Mostly each rule is its own first equal one.
    const auto isRemoved = [](const rules::ChangeSet::Removal& removal, const rules::RuleRef& rule) {
        return removal.rule == rule;
    };
    if (std::equal(deletion.removed.begin(), deletion.removed.end(), rules.begin(), rules.end(), isRemoved))
        return {};
    std::unordered_set<const void*> removed;
    for (const rules::ChangeSet::Removal& removal : deletion.removed)
        removed.insert(addressOf(removal.rule));
    // A rule that is already gone does not remain.
    if (removed.size() < rules.size())
        return {};
    std::vector<rules::RuleRef> remaining;
    for (const rules::RuleRef& rule : rules) {
        if (!removed.contains(addressOf(rule)))
            remaining.push_back(rule);
    }
    return remaining;
}

} // namespace

RuleCommands::RuleCommands(RulesDocument& document, platform::Log& log)
    : m_document(document)
    , m_log(log)
{
}

rules::PolicyRulePtr RuleCommands::newPolicy()
{
    return std::make_shared<rules::PolicyRule>(
        rules::PolicyRuleFields{.path = "", .processName = "any", .operations = readWriteCreate});
}

rules::WatchRulePtr RuleCommands::newWatch()
{
    return std::make_shared<rules::WatchRule>(
        rules::WatchRuleFields{.path = "", .processName = "any", .operations = readWriteCreate});
}

rules::PolicyRulePtr RuleCommands::newPolicyLike(const rules::RuleRef& rule)
{
    rules::PolicyRuleFields fields{.path = "", .operations = readWriteCreate};
    fields.processName = visitRule(rule, [](const auto& record) { return record.processName(); });
    if (const rules::PolicyRule* policy = policyRuleIn(rule))
        fields.constraint = policy->constraint();
    return std::make_shared<rules::PolicyRule>(std::move(fields));
}

rules::RuleRef RuleCommands::newCopyOf(const rules::RuleRef& rule)
{
    return askValue(quorvane::workflow::newCopyOf(valueOf(rule)), [](auto fields) {
        fields.path = std::nullopt;
        return recordOf(rules::RuleValue(makeRuleValue(std::move(fields))));
    });
}

TableChange RuleCommands::deleteRow(const RuleRow& row, const rules::RuleRef* above)
{
    if (isSystemRule(row.rule))
        return {.notice = systemRuleNotice("Cannot Delete System Rule", "deleted")};
    rules::ChangeSet deletion = deletionOf(m_document.store(), {row.rule});
    m_document.markChanged();
    if (deletion.isEmpty())
        return {};
    std::vector<rules::RuleRef> remaining = remainingOf(deletion, {row.rule});
    m_document.perform(std::move(deletion), {actionName("Delete", 1)});
    return {.removedRows = {row.row},
        .remaining = std::move(remaining),
        .headedItsGroup = headsItsGroup(row.rule, above)};
}

TableChange RuleCommands::deleteRows(std::vector<RuleRow> rows)
{
    TableChange change;
    std::vector<rules::RuleRef> rules;
    rules.reserve(rows.size());
    change.removedRows.reserve(rows.size());
    for (auto& [row, rule] : rows) {
        // Without the lock of other threads, for which a million rules would wait 80 ms.
        if (visitRule(rule, [](const auto& record) { return record.fields().system; })) {
            change.notice = systemRuleNotice("Cannot Delete System Rules", "deleted");
            continue;
        }
        logDeletionOf(row);
        rules.push_back(std::move(rule));
        change.removedRows.push_back(row);
    }
    rules::ChangeSet deletion = deletionOf(m_document.store(), rules);
    change.remaining = remainingOf(deletion, rules);
    m_document.perform(std::move(deletion), {actionName("Delete", rules.size())});
    return change;
}

TableChange RuleCommands::deleteAllRows(const rules::RuleRows& rows, bool includeSystemRules)
{
    const std::size_t count = rows.count(includeSystemRules);
    const bool areAllRules = rows.count(false) == count && m_document.store().hasExactly(rows);
    auto removal = areAllRules ? m_document.store().removalOfAllUserRules() : std::nullopt;
    if (!removal) {
        std::vector<RuleRow> each;
        each.reserve(count);
        rows.forEach(includeSystemRules, [&each](std::size_t row, const rules::RuleRef& rule) {
            each.push_back({row, rule});
        });
        return deleteRows(std::move(each));
    }
    TableChange change;
    change.removedRows.resize(count);
    std::iota(change.removedRows.begin(), change.removedRows.end(), std::size_t{0});
    for (const std::size_t row : change.removedRows)
        logDeletionOf(row);
    m_document.perform(std::move(*removal), {actionName("Delete", count)});
    return change;
}

void RuleCommands::logDeletionOf(std::size_t row)
{
    if (m_log.isListening())
        m_log.write("-[RulesEditorTableController deleteRows:] deleting row " + std::to_string(row));
}

std::optional<Notice> RuleCommands::setTag(const std::optional<RuleRow>& row, const std::string& tag)
{
    std::optional<Notice> notice;
    rules::ChangeSet change;
    if (row && isSystemRule(row->rule))
        notice = systemRuleNotice("Cannot Edit System Rules", "edited");
    else if (row)
        change = taggingOf({row->rule}, tag);
    m_document.perform(change, {"Edit Tag"});
    if (const rules::PolicyRule* policy = row ? policyRuleIn(row->rule) : nullptr)
        logTag(m_log, *policy, row->row);
    return notice;
}

} // namespace quorvane::workflow
