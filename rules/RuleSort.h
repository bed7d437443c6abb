#pragma once

#include "rules/AppendOnlyTable.h"
#include "rules/RuleRef.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// Sort keys: the properties of rules, by name, and three values that the table shows. A property that a
// record kind lacks counts as absent.
enum class SortKey {
    policyClass, // Deliberate: 0 for every watch rule, as the record returns
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
    processShortName, // the result of getProcessShortName()
    ruleState,
    shownClass, // as policyClass, but PolicyClass::watch for a watch rule
};

// The key of a property name; none for any other text.
std::optional<SortKey> sortKeyNamed(std::string_view property);

struct SortDescriptor {
    SortKey key;
    bool ascending = true;

    friend bool operator==(const SortDescriptor&, const SortDescriptor&) = default;
};

// Sorts `order`, numbers of `rules`: the first descriptor is the primary key, each later one breaks the ties
// of those before it, and rules that tie in all keep their order. Texts compare by code point after case
// folding, null or absent first; numbers numerically. False, and nothing is sorted, when stopped. Any thread;
// throws std::bad_alloc.
bool sortRules(std::vector<std::uint32_t>& order, const AppendOnlyTable<RuleRef>& rules,
    const std::vector<SortDescriptor>& descriptors, const std::stop_token& stop = {});

// Negative when `a` comes before `b` in that order, positive when after it, 0 when they tie in all.
int compareRules(const RuleRef& a, const RuleRef& b, const std::vector<SortDescriptor>& descriptors);

} // namespace quorvane::rules
