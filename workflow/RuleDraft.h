#pragma once

#include "rules/RuleRef.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace quorvane::workflow {

// The operations as check boxes: read, write, create, mount, execute. Other bits have no box.
using OperationBoxes = std::array<bool, 5>;
OperationBoxes boxesForOperations(std::uint32_t operations);
std::uint32_t operationsForBoxes(const OperationBoxes& boxes);

// The contents of an editor's controls for a rule of either kind. A value: changing it changes no rule.
struct RuleDraft {
    // None for a code without an item in the control; the rule then keeps its code.
    std::optional<std::int32_t> policyClass{}; // none for watch rules
    std::optional<std::int32_t> policyType{};
    std::string path{};
    std::string processName{};
    std::string constraint{}; // empty for watch rules
    std::uint32_t operations = 0; // those that have a check box

    bool operator==(const RuleDraft&) const = default;
};

// The initial contents of the controls for `rule`.
RuleDraft draftOf(const rules::RuleRef& rule);

// `rule` with the contents of the controls. Properties without a control stay: tag, flags, creation time,
// sequence number, system flag.
rules::RuleValue valueWithDraft(const rules::RuleValue& rule, const RuleDraft& draft);

} // namespace quorvane::workflow
