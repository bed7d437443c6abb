#include "rules/FailSafeMerge.h"

#include "platform/PathComponents.h"
#include "rules/Hashing.h"
#include "rules/RuleIdentity.h"

#include <algorithm>

namespace quorvane::rules {

namespace {

using Slots = std::vector<PolicyRulePtr>;

std::string folderOf(const NullableText& path)
{
    return platform::deletingLastPathComponent(path.view()) + "/";
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

void FailSafeMerge::FolderSlots::insert(std::string_view path, std::uint32_t slot)
{
    auto& [key, slots] = *m_byPath.try_emplace(std::string(path)).first;
    if (!slots.empty())
        m_firsts.erase({*slots.begin(), key});
    slots.insert(slot);
    m_firsts.insert({*slots.begin(), key});
}

void FailSafeMerge::FolderSlots::erase(std::string_view path, std::uint32_t slot)
{
    const auto found = m_byPath.find(std::string(path));
    auto& [key, slots] = *found;
    m_firsts.erase({*slots.begin(), key});
    slots.erase(slot);
    if (slots.empty())
        m_byPath.erase(found);
    else
        m_firsts.insert({*slots.begin(), key});
}

std::optional<std::uint32_t> FailSafeMerge::FolderSlots::firstOnOtherPath(
    std::string_view a, std::string_view b) const
{
    const auto other = std::find_if(m_firsts.begin(), m_firsts.end(),
        [&](const auto& first) { return first.second != a && first.second != b; });
    return other == m_firsts.end() ? std::nullopt : std::optional(other->first);
}

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
    const auto merging = index.byFolder[folder].firstOnOtherPath(folder, path.view());
    const auto alike
        = [&](const PolicyRule& existing) { return existing.isEqualToPolicyRuleWithPrefix(rule); };
    const std::size_t standIn = firstSlot(index.byAllButPath, hashOfAllButPath(rule), slots, alike);
    if (!merging || *merging > standIn)
        return standIn < slots.size();

    const std::uint32_t slot = *merging;
    index.byFolder[folder].erase(slots[slot]->fields().path.view(), slot);
    index.byFolder[folderOf(folder)].insert(folder, slot);
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
            index.byFolder[folderOf(rule.fields().path)].insert(rule.fields().path.view(), slot);
    }
}

} // namespace quorvane::rules
