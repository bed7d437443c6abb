#pragma once

#include "rules/PolicyRule.h"
#include "rules/WatchRule.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What the two rule editors decide, and how they save. User interface thread only.

namespace quorvane {

class RuleManager;
struct RunState;

// True when a rule with these texts may be saved. Deliberate: nothing but their emptiness counts; not what
// they say, not the constraint, not the operations.
bool isCompleteRule(std::string_view path, std::string_view processName);

// The type that a path suggests: a suffix when it begins with ".", else a prefix when it ends with "/", else
// a path; so ".a/" is a suffix.
std::int32_t policyTypeForPath(std::string_view path);

// What a constraint is called: "SHA1", "SHA256" or "Team ID". Only its length counts.
std::string_view constraintLabel(std::string_view constraint);

// The operations as check boxes: read, write, create, mount, execute. Other bits have no box.
using OperationBoxes = std::array<bool, 5>;
OperationBoxes boxesForOperations(std::uint32_t operations);
std::uint32_t operationsForBoxes(const OperationBoxes& boxes);

// The icon that stands for the program of a process string.
struct ProgramIcon {
    enum class Kind { none, lock, file };
    Kind kind = Kind::none;
    std::string file{}; // whose icon is meant; for Kind::file only
};

// The lock for "any"; none when no file exists at the program's path.
ProgramIcon iconForProcess(const std::string& processName);

// Where a file panel starts: `text`, or `fallback` when the text is empty or "any".
std::string panelStart(std::string_view text, std::string_view fallback);

// What an editor's controls say. Without a class or type, the rule keeps the unknown one that it has.
struct EditedWatchRule {
    std::optional<std::int32_t> policyType{};
    std::string path{};
    std::string processName{};
    std::uint32_t operations = 0;
};
struct EditedPolicyRule {
    EditedWatchRule common{};
    std::optional<std::int32_t> policyClass{};
    std::string constraint{};
};

// Marks the run as changed, takes the rule out of the store, writes the edits into the very same record, adds
// it to the store and writes the user's file. A rule that the store does not hold, because it is new or was
// deleted meanwhile, is added all the same; one that the store has read anew is replaced as long as it is
// still equal. Deliberate: failures are not looked at, the file's included.
void savePolicyRule(
    RuleManager& store, RunState& run, const PolicyRulePtr& rule, const EditedPolicyRule& edited);
void saveWatchRule(
    RuleManager& store, RunState& run, const WatchRulePtr& rule, const EditedWatchRule& edited);

} // namespace quorvane
