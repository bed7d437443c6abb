#pragma once

#include "rules/RuleRef.h"
#include "rules/RuleRows.h"
#include "workflow/Notice.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

class RulesDocument;

// A rule, and the row that the table shows it in.
struct RuleRow {
    std::size_t row;
    rules::RuleRef rule;
};

// The result of a command.
struct TableChange {
    std::vector<std::size_t>
        removedRows{}; // of the deleted rules; as numbered before the deletion, ascending
    // Selected rules that still exist, since of equal ones the first is deleted.
    std::vector<rules::RuleRef> remaining{};
    bool headedItsGroup = false; // the single deleted rule was the first of its application group
    std::optional<Notice> notice{};
};

// The commands of the rules table on the user's rules. Every command that changes rules writes the file;
// system rules are never changed. Rules are identified by their records; rows are only for the log and the
// table. For the thread that owns the store.
class RuleCommands {
public:
    // Both must outlive it.
    RuleCommands(RulesDocument& document, platform::Log& log);

    // Initial rules for an editor; not yet stored.
    static rules::PolicyRulePtr newPolicy();
    static rules::WatchRulePtr newWatch();
    // Another rule for the program of `rule`, under its constraint.
    static rules::PolicyRulePtr newPolicyLike(const rules::RuleRef& rule);
    // The initial record of a copy of `rule`: its kind, tag and flags, without a path, so that it equals no
    // rule. The rest comes from draftOf(rule).
    static rules::RuleRef newCopyOf(const rules::RuleRef& rule);

    // Deletes one rule; `above` is the one in the row above it, null in the first row. For a rule that is no
    // longer stored it silently changes nothing.
    TableChange deleteRow(const RuleRow& row, const rules::RuleRef* above);

    // Deletes several rules, given in row order, and skips system rules.
    // Deliberate: writes the file and marks the run as changed even when nothing was left to delete.
    TableChange deleteRows(std::vector<RuleRow> rows);
    // The same for all rows of a table: as fast for a million as for one, if they are all rules of the user.
    TableChange deleteAllRows(const rules::RuleRows& rows, bool includeSystemRules);

    // Sets the tag of a rule. Deliberate: writes the file and marks the run as changed also for a system
    // rule, which keeps its tag, or when there is no rule.
    std::optional<Notice> setTag(const std::optional<RuleRow>& row, const std::string& tag);

private:
    void logDeletionOf(std::size_t row);

    RulesDocument& m_document;
    platform::Log& m_log;
};

} // namespace quorvane::workflow
