#pragma once

#include "rules/PolicyGroup.h"
#include "rules/SlotChains.h"

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>

namespace quorvane {

// Merges the rules of a fail-safe file while it is read: rules on files of one folder, in one application
// group, become one rule on the folder, whatever their classes, and a rule that differs from an earlier one
// in its path only is dropped. Rules on resources, whose paths begin with ":", are left alone.
//
// Lives for the reading of one file, during which nobody else changes the rules.
class FailSafeMerge {
public:
    // True when a rule of `group` stands for `rule`, so that `rule` must not be stored. May set the path of
    // both.
    bool absorbs(PolicyRule& rule, const PolicyGroup& group);

private:
    // The rules of one group under what the merge asks for.
    struct GroupIndex {
        SlotChains byIdentity;
        SlotChains byAllButPath;
        std::unordered_map<std::string, std::set<std::uint32_t>> byFolder;
        std::size_t indexedSlots = 0;
    };
    static void bringUpToDate(GroupIndex& index, const RuleList<PolicyRule>& rules);

    std::unordered_map<const PolicyGroup*, GroupIndex> m_groups;
};

} // namespace quorvane
