#include "rules/CoverIndex.h"

#include "rules/Hashing.h"
#include "rules/PathCover.h"
#include "rules/Prefetch.h"
#include "rules/RuleCodes.h"

#include <algorithm>

namespace quorvane::rules {

namespace {

// The hash of a path prefix, extended byte by byte; eight bytes are mixed at a time.
class PrefixHash {
public:
    explicit PrefixHash(const PolicyRuleFields& rule)
        : m_state(combinedHash(static_cast<std::uint64_t>(rule.policyClass), rule.constraint.view()))
    {
    }
    void extend(char byte)
    {
        m_tail |= std::uint64_t{static_cast<unsigned char>(byte)} << m_length % 8 * 8;
        if (++m_length % 8 == 0) {
            m_state = combinedHash(m_state, m_tail);
            m_tail = 0;
        }
    }
    std::uint64_t value() const { return combinedHash(m_state ^ m_length, m_tail); }

private:
    std::uint64_t m_state;
    std::uint64_t m_tail = 0; // the bytes since the last mixing
    std::uint64_t m_length = 0;
};

// Wildcards are indexed under the empty path.
std::uint64_t hashOfCoveringPath(const PolicyRuleFields& rule)
{
    PrefixHash hash(rule);
    if (!isEveryPath(rule.path)) {
        for (const char byte : rule.path.view())
            hash.extend(byte);
    }
    return hash.value();
}

bool canCover(const PolicyRuleFields& rule)
{
    return !rule.constraint.isNull()
        && (isEveryPath(rule.path) || (rule.policyType == PolicyType::prefix && !rule.path.isNull()));
}

// True when both cover the same rules. Requires two rules that can cover.
bool coverAlike(const PolicyRuleFields& a, const PolicyRuleFields& b)
{
    const bool samePaths = isEveryPath(a.path) ? isEveryPath(b.path) : equalNonNull(a.path, b.path);
    return samePaths && a.policyClass == b.policyClass && equalNonNull(a.constraint, b.constraint)
        && isBitwiseInclusive(a.operations, b.operations) && isBitwiseInclusive(b.operations, a.operations);
}

} // namespace

bool coversRule(const PolicyRule& broader, const PolicyRule& rule)
{
    const PolicyRuleFields& wide = broader.fields();
    const PolicyRuleFields& narrow = rule.fields();
    if (wide.policyClass != narrow.policyClass || !isBitwiseInclusive(wide.operations, narrow.operations)
        || !equalNonNull(wide.constraint, narrow.constraint))
        return false;
    return isEveryPath(wide.path)
        || (wide.policyType == PolicyType::prefix && !wide.path.isNull()
            && narrow.path.view().starts_with(wide.path.view()));
}

CoverIndex::CoverIndex(const std::vector<PolicyRulePtr>& slots)
    : m_slots(slots)
{
    const auto visitAt = [&slots](std::size_t slot, const auto& use) {
        if (slots[slot])
            use(*slots[slot]);
    };
    forEachPrefetchedRule(
        slots.size(),
        [&](std::size_t slot) { visitAt(slot, [&](const PolicyRule& rule) { add(slot, rule.fields()); }); },
        visitAt);
}

// Looks up the empty path and each longer prefix of the rule's path; of all hits the lowest slot is the first
// rule.
const PolicyRule* CoverIndex::firstCovering(const PolicyRule& rule)
{
    std::uint32_t found = SlotChains::none;
    const auto lookUp = [&](std::uint64_t hash) {
        if (!m_filter.mayHold(hash))
            return;
        for (auto entry = m_chains.first(hash); entry != SlotChains::none; entry = m_chains.next(entry)) {
            const std::uint32_t slot = firstOtherThan(rule, entry);
            if (slot < found && coversRule(*m_slots[slot], rule))
                found = slot;
        }
    };
    PrefixHash hash(rule.fields());
    lookUp(hash.value());
    for (const char byte : rule.fields().path.view()) {
        hash.extend(byte);
        lookUp(hash.value());
    }
    return found == SlotChains::none ? nullptr : m_slots[found].get();
}

std::uint32_t CoverIndex::firstOtherThan(const PolicyRule& rule, std::uint32_t entry) const
{
    const std::uint32_t first = m_chains.slot(entry);
    if (first == SlotChains::none || m_slots[first].get() != &rule)
        return first;
    const auto others = m_others.find(entry);
    if (others == m_others.end())
        return SlotChains::none;
    const auto other = std::find_if(others->second.begin(), others->second.end(),
        [&](std::uint32_t slot) { return m_slots[slot].get() != &rule; });
    return other == others->second.end() ? SlotChains::none : *other;
}

void CoverIndex::add(std::size_t slot, const PolicyRuleFields& rule)
{
    if (!canCover(rule))
        return;
    auto added = static_cast<std::uint32_t>(slot);
    const std::uint64_t hash = hashOfCoveringPath(rule);
    const std::uint32_t entry = entryOfAlike(hash, rule);
    if (entry == SlotChains::none) {
        m_chains.insert(hash, added);
        addHash(hash);
        ++m_rules;
    } else if (const std::uint32_t first = m_chains.slot(entry); first != added) {
        m_rules += m_others[entry].insert(std::max(first, added)).second ? 1U : 0U;
        m_chains.setSlot(entry, std::min(first, added));
    }
}

// The entry whose rules cover the same as `rule`; `none` if absent.
std::uint32_t CoverIndex::entryOfAlike(std::uint64_t hash, const PolicyRuleFields& rule)
{
    if (!m_filter.mayHold(hash))
        return SlotChains::none;
    auto entry = m_chains.first(hash);
    const auto isAlike = [&](std::uint32_t slot) {
        return slot != SlotChains::none && coverAlike(m_slots[slot]->fields(), rule);
    };
    while (entry != SlotChains::none && !isAlike(m_chains.slot(entry)))
        entry = m_chains.next(entry);
    return entry;
}

void CoverIndex::remove(std::size_t slot, const PolicyRuleFields& rule)
{
    if (!canCover(rule))
        return;
    const auto gone = static_cast<std::uint32_t>(slot);
    const std::uint64_t hash = hashOfCoveringPath(rule);
    for (auto entry = m_chains.first(hash); entry != SlotChains::none; entry = m_chains.next(entry)) {
        const auto others = m_others.find(entry);
        const bool isFirst = m_chains.slot(entry) == gone;
        if (!isFirst && (others == m_others.end() || others->second.erase(gone) == 0))
            continue;
        if (isFirst && others == m_others.end()) {
            m_chains.setSlot(entry, SlotChains::none);
        } else if (isFirst) {
            m_chains.setSlot(entry, *others->second.begin());
            others->second.erase(others->second.begin());
        }
        if (others != m_others.end() && others->second.empty())
            m_others.erase(others);
        --m_rules;
        return;
    }
}

bool CoverIndex::isOutworn() const
{
    constexpr std::size_t fewEntries = 64;
    return m_chains.size() > 2 * m_rules + fewEntries;
}

void CoverIndex::addHash(std::uint64_t hash)
{
    m_hashes.push_back(hash);
    if (m_hashes.size() > m_filter.room()) {
        m_filter.reset(m_hashes.size());
        for (const std::uint64_t known : m_hashes)
            m_filter.add(known);
    }
    m_filter.add(hash);
}

} // namespace quorvane::rules
