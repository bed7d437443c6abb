#pragma once

#include "rules/RuleList.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvane {

// True when `broader` makes `rule` redundant: of the same class and constraint, with all its operations, and
// with a path that is "any" or empty, or that is a prefix rule's and `rule`'s path begins with it.
// Deliberate: the wildcard's type, rule's own type, flags, tag and system do not matter.
bool coversRule(const PolicyRule& broader, const PolicyRule& rule);

// Finds the rule of a list that covers another, at a cost that depends on the length of the path and not on
// the number of rules: every rule that can cover stands under a hash of its path, and all beginnings of the
// asked path are looked up. Answers as a walk of the list would, also after rules were added, removed or
// changed.
class CoverIndex {
public:
    // The first rule of `rules` that covers `rule` and is another object; null when there is none. Must
    // always be called with the same list.
    const PolicyRule* firstCovering(const PolicyRule& rule, const RuleList<PolicyRule>& rules);

private:
    void bringUpToDate(const RuleList<PolicyRule>& rules);
    bool isOneOfTooMany(const PolicyRule& rule, std::uint64_t hash, const RuleList<PolicyRule>& rules);
    void insert(std::uint64_t hash, std::uint32_t slot);
    bool mayHold(std::uint64_t hash) const;
    void rebuildFilter(std::size_t bits);

    SlotChains m_chains;
    std::vector<std::uint64_t> m_hashes; // of all entries, in order
    std::vector<std::uint64_t> m_filter; // one bit for each hash: most beginnings of a path are nobody's
    std::size_t m_indexedSlots = 0;
    bool m_isMixed = false; // rules of several process names
    std::uint64_t m_layout = 0;
    std::uint64_t m_keyChanges = 0;
};

} // namespace quorvane
