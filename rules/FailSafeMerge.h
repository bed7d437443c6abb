#pragma once

#include "rules/Hashing.h"
#include "rules/PolicyGroup.h"
#include "rules/SlotChains.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace quorvane::rules {

// Merges the rules of a fail-safe file while it is read: rules on files of one folder, in one application
// group, become one rule on the folder, whatever their classes, and a rule that differs from an earlier one
// only in its path is dropped. Rules on resources, whose paths begin with ":", are not merged.
//
// Use one object per file read, during which nothing else may change the rules. For the thread that owns the
// store.
class FailSafeMerge {
public:
    // True when a rule of `group` already represents `rule`, so that `rule` must not be stored. May set the
    // path of both.
    bool absorbs(PolicyRule& rule, const PolicyGroup& group);

private:
    // The slots of rules in one folder, organized so that finding the first rule on a path other than two
    // given ones inspects at most three paths, however many rules share a path.
    class FolderSlots {
    public:
        void insert(std::string_view path, std::uint32_t slot);
        void erase(std::string_view path, std::uint32_t slot);
        std::optional<std::uint32_t> firstOnOtherPath(std::string_view a, std::string_view b) const;

    private:
        std::unordered_map<std::string, std::set<std::uint32_t>, TextHash> m_byPath;
        std::set<std::pair<std::uint32_t, std::string_view>> m_firsts; // the first slot of each path
    };

    // The rules of one group, indexed for the lookups of the merge.
    struct GroupIndex {
        SlotChains byIdentity;
        SlotChains byAllButPath;
        std::unordered_map<std::string, FolderSlots, TextHash> byFolder;
        std::size_t indexedSlots = 0;
    };
    static void bringUpToDate(GroupIndex& index, const RuleList<PolicyRule>& rules);

    std::unordered_map<const PolicyGroup*, GroupIndex> m_groups;
};

} // namespace quorvane::rules
