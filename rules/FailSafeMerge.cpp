#include "rules/FailSafeMerge.h"

#include "platform/PathComponents.h"
#include "rules/Hashing.h"
#include "rules/RuleIdentity.h"

#include <algorithm>
#include <iterator>

namespace quorvane {

namespace {

using Slots = std::vector<PolicyRulePtr>;

std::string folderOf(const NullableText& path)
{
    return deletingLastPathComponent(path.view()) + "/";
}

std::uint64_t hashOfAllButPath(const PolicyRule& rule)
{
    const PolicyRuleFields& fields = rule.fields();
    std::uint64_t hash
        = combinedHash(static_cast<std::uint64_t>(fields.policyClass), fields.processName.view());
    hash = combinedHash(hash, fields.constraint.view());
    hash = combinedHash(hash, static_cast<std::uint64_t>(fields.policyType));
    return combinedHash(hash, std::uint64_t{fields.operations} << 32U | fields.flags);
}

// The first slot under `hash` whose rule `matches`; the number of slots when there is none.
template <class Matches>
std::size_t firstSlot(SlotChains& chains, std::uint64_t hash, const Slots& slots, Matches matches)
{
    for (auto entry = chains.first(hash); entry != SlotChains::none; entry = chains.next(entry)) {
        if (matches(*slots[chains.slot(entry)]))
            return chains.slot(entry);
    }
    return slots.size();
}

} // namespace

bool FailSafeMerge::absorbs(PolicyRule& rule, const PolicyGroup& group)
{
    GroupIndex& index = m_groups[&group];
    bringUpToDate(index, group.rules());
    const Slots& slots = group.rules().slots();
    const NullableText path = rule.path();
    if (path.view().starts_with(":")) {
        const auto equal = [&](const PolicyRule& existing) { return existing.isEqualToPolicyRule(rule); };
        return firstSlot(index.byIdentity, identityHash(rule), slots, equal) < slots.size();
    }

    const std::string folder = folderOf(path);
    const auto mergesWith = [&](const PolicyRule& existing) {
        const std::string_view other = existing.fields().path.view();
        return other != folder && other != path.view();
    };
    auto& inFolder = index.byFolder[folder];
    const auto merging = std::find_if(
        inFolder.begin(), inFolder.end(), [&](std::uint32_t slot) { return mergesWith(*slots[slot]); });
    const auto alike
        = [&](const PolicyRule& existing) { return existing.isEqualToPolicyRuleWithPrefix(rule); };
    const std::size_t standIn = firstSlot(index.byAllButPath, hashOfAllButPath(rule), slots, alike);
    if (merging == inFolder.end() || *merging > standIn)
        return standIn < slots.size();

    const std::uint32_t slot = *merging;
    inFolder.erase(merging);
    index.byFolder[folderOf(folder)].insert(slot);
    slots[slot]->setPath(folder);
    rule.setPath(folder);
    return true;
}

void FailSafeMerge::bringUpToDate(GroupIndex& index, const RuleList<PolicyRule>& rules)
{
    const Slots& slots = rules.slots();
    for (; index.indexedSlots < slots.size(); ++index.indexedSlots) {
        const auto slot = static_cast<std::uint32_t>(index.indexedSlots);
        if (!slots[slot])
            continue;
        const PolicyRule& rule = *slots[slot];
        index.byIdentity.insert(identityHash(rule), slot);
        index.byAllButPath.insert(hashOfAllButPath(rule), slot);
        if (!rule.fields().path.isNull())
            index.byFolder[folderOf(rule.fields().path)].insert(slot);
    }
}

} // namespace quorvane
