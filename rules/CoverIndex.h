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
// with a path that is "any" or empty, or that is a prefix rule's and a prefix of `rule`'s path.
// Deliberate: the wildcard's type, rule's own type, flags, tag and system do not matter.
bool coversRule(const PolicyRule& broader, const PolicyRule& rule);

// Finds the rule of a list that covers another, at a cost that depends on the length of the path and not on
// the number of rules: every rule that can cover is indexed by a hash of its class, constraint and path, and
// all prefixes of the queried path are looked up. Returns the same as a scan of the list would. Updated
// incrementally. For the thread that owns the store; throws std::bad_alloc.
class CoverIndex {
public:
    // Indexes the rules in `slots`, which must outlive it.
    explicit CoverIndex(const std::vector<PolicyRulePtr>& slots);

    // The first rule, other than the object `rule` itself, that covers it; null when there is none.
    const PolicyRule* firstCovering(const PolicyRule& rule);

    // Call them after a rule with these properties was put into the slot, or removed from it.
    void add(std::size_t slot, const PolicyRuleFields& rule);
    void remove(std::size_t slot, const PolicyRuleFields& rule);

    // True when most entries belong to removed rules, so that it should be rebuilt.
    bool isOutworn() const;

private:
    // Rules that cover the same paths with the same operations share an entry, of which the first rule is
    // returned. Otherwise many such rules would turn every query into a scan.
    using OtherSlots = std::set<std::uint32_t>;

    std::uint32_t entryOfAlike(std::uint64_t hash, const PolicyRuleFields& rule);
    std::uint32_t firstOtherThan(const PolicyRule& rule, std::uint32_t entry) const;
    void addHash(std::uint64_t hash);

    const std::vector<PolicyRulePtr>& m_slots;
    SlotChains m_chains; // the first slot of each entry; none in an entry that has become empty
    std::unordered_map<std::uint32_t, OtherSlots> m_others; // by entry
    std::vector<std::uint64_t> m_hashes; // of all entries, in order
    BloomFilter m_filter;
    std::size_t m_rules = 0;
};

} // namespace quorvane::rules
