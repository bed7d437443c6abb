#pragma once

#include "rules/RuleRef.h"
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

// What a command has come to.
struct TableChange {
    std::vector<std::size_t> removedRows{}; // of the rules deleted; as they were numbered before, ascending
    // Selected rules that are still there, since of equal ones the first goes.
    std::vector<rules::RuleRef> remaining{};
    bool headedItsGroup = false; // the one rule deleted was the first of its application group
    std::optional<Notice> notice{};
};

// What the commands of the rules table do to the user's rules. Every command that changes rules writes the
// file; system rules are never changed. Rules are named by themselves; their rows are for the log and the
// table. For the thread that owns the store.
class RuleCommands {
public:
    // Both must outlive it.
    RuleCommands(RulesDocument& document, platform::Log& log);

    // Rules to begin with; not yet stored.
    static rules::PolicyRulePtr newPolicy();
    static rules::WatchRulePtr newWatch();
    // Another rule for the program of `rule`, under its constraint.
    static rules::PolicyRulePtr newPolicyLike(const rules::RuleRef& rule);
    // What a copy of `rule` begins with: its kind, tag and flags, and no path, so that it is equal to no
    // rule. The rest is draftOf(rule)'s.
    static rules::RuleRef newCopyOf(const rules::RuleRef& rule);

    // Deletes one rule; `above` is the one in the row above it, null in the first row. A rule that the store
    // no longer has changes nothing, silently.
    TableChange deleteRow(const RuleRow& row, const rules::RuleRef* above);

    // Deletes several rules, given in the order of their rows, and leaves out those of the system.
    // Deliberate: writes the file and marks the run as changed even when nothing was left to delete.
    TableChange deleteRows(const std::vector<RuleRow>& rows);

    // Gives a rule a tag. Deliberate: writes the file and marks the run as changed also when the rule is one
    // of the system, which keeps its tag, or when there is none.
    std::optional<Notice> setTag(const std::optional<RuleRow>& row, const std::string& tag);

private:
    RulesDocument& m_document;
    platform::Log& m_log;
};

} // namespace quorvane::workflow
