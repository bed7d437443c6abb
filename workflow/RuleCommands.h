#pragma once

#include "rules/RuleManager.h"
#include "workflow/Notice.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

class Log;
struct RunState;

// What a table must do after a command.
struct TableChange {
    std::vector<std::size_t> removedRows{}; // as they were numbered before, ascending
    // The row, as it is numbered now, that has become the first of its application group.
    std::optional<std::size_t> newGroupHead{};
    std::optional<Notice> notice{};
};

// What the commands of the rules table do to the store, the user's file and the state of the run. Every
// command that changes rules writes the file; system rules are never changed. Row numbers are those of the
// store's present rows, with or without system rules as `includeSystemRules` says. For the thread that owns
// the store.
class RuleCommands {
public:
    // All must outlive it.
    RuleCommands(RuleManager& store, RunState& run, Log& log);

    // Rules to begin with; not yet stored.
    static PolicyRulePtr newPolicy();
    static WatchRulePtr newWatch();
    // Another rule for the program of `rule`, under its constraint.
    static PolicyRulePtr newPolicyLike(const RuleRef& rule);

    // Deletes one rule. A rule that the store no longer has changes nothing, silently.
    TableChange deleteRow(std::size_t row, bool includeSystemRules);

    // Deletes the rules of several rows, given in ascending order, and leaves out those of the system.
    // Deliberate: writes the file and marks the run as changed even when nothing was left to delete.
    TableChange deleteRows(const std::vector<std::size_t>& rows, bool includeSystemRules);

    // Gives the rule of `row` a tag. Deliberate: writes the file and marks the run as changed also when the
    // rule is one of the system, which keeps its tag, or when there is no row.
    std::optional<Notice> setTag(
        std::optional<std::size_t> row, const std::string& tag, bool includeSystemRules);

private:
    bool headsItsGroup(const PolicyRule& rule, std::size_t row, bool includeSystemRules) const;
    bool deleteFromStore(const RuleRef& rule);
    void write();

    RuleManager& m_store;
    RunState& m_run;
    Log& m_log;
};

} // namespace quorvane
