#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RuleRef.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// What rules can be sorted by: their properties, under their names, and three things that the table shows. A
// property that a record kind lacks counts as absent.
enum class SortKey {
    policyClass, // Deliberate: 0 for every watch rule, as the record answers
    policyType,
    path,
    processName,
    tag,
    constraint,
    operations,
    flags,
    created,
    sequence,
    system,
    processShortName, // what getProcessShortName() answers
    ruleState,
    shownClass, // as policyClass, but PolicyClass::watch for a watch rule
};

// The key of a property name; none for other texts and for what is not a property.
std::optional<SortKey> sortKeyNamed(std::string_view property);

struct SortDescriptor {
    SortKey key;
    bool ascending = true;

    friend bool operator==(const SortDescriptor&, const SortDescriptor&) = default;
};

// Sorts `order`, numbers of `rules`: the first descriptor is the primary key, each later one breaks the ties
// of those before it, and rules that tie in all keep their order. Texts compare by code point after
// case folding, null or absent first; numbers numerically.
void sortRules(std::vector<std::uint32_t>& order, const AppendOnlyTable<RuleRef>& rules,
    const std::vector<SortDescriptor>& descriptors);

// Negative when `a` stands before `b` in that order, positive when behind it, 0 when they tie in all.
int compareRules(const RuleRef& a, const RuleRef& b, const std::vector<SortDescriptor>& descriptors);

} // namespace quorvane::rules
