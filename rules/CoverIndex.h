#pragma once

#include "rules/BloomFilter.h"
#include "rules/PolicyRule.h"
#include "rules/SlotChains.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <unordered_map>
#include <vector>

namespace quorvane::rules {

// True when `broader` makes `rule` redundant: of the same class and constraint, with all its operations, and
// with a path that is "any" or empty, or that is a prefix rule's and `rule`'s path begins with it.
// Deliberate: the wildcard's type, rule's own type, flags, tag and system do not matter.
bool coversRule(const PolicyRule& broader, const PolicyRule& rule);

// Finds the rule of a list that covers another, at a cost that depends on the length of the path and not on
// the number of rules: every rule that can cover stands under a hash of its path, and all beginnings of the
// asked path are looked up. Answers as a walk of the list would. Follows additions and removals by
// difference.
class CoverIndex {
public:
    // Of the rules in `slots`, which must outlive it.
    explicit CoverIndex(const std::vector<PolicyRulePtr>& slots);

    // The first rule that covers `rule` and is another object; null when there is none.
    const PolicyRule* firstCovering(const PolicyRule& rule);

    // A rule of these properties is in the slot from now on, or is there no more.
    void add(std::size_t slot, const PolicyRuleFields& rule);
    void remove(std::size_t slot, const PolicyRuleFields& rule);

    // True when most of it is about rules that are gone.
    bool isOutworn() const;

private:
    // Rules that cover the same, of the same operations, share an entry: the first of them answers for all.
    // Without that, many of them would make every question a walk.
    using OtherSlots = std::set<std::uint32_t>;

    std::uint32_t entryOfAlike(std::uint64_t hash, const PolicyRuleFields& rule);
    std::uint32_t firstOtherThan(const PolicyRule& rule, std::uint32_t entry) const;
    void addHash(std::uint64_t hash);

    const std::vector<PolicyRulePtr>& m_slots;
    SlotChains m_chains; // the first slot of each entry; none in an entry that is empty by now
    std::unordered_map<std::uint32_t, OtherSlots> m_others; // by entry
    std::vector<std::uint64_t> m_hashes; // of all entries, in order
    BloomFilter m_filter;
    std::size_t m_rules = 0;
};

} // namespace quorvane::rules
