#include "rules/CoverIndex.h"

#include "rules/Hashing.h"
#include "rules/RuleCodes.h"

#include <algorithm>
#include <bit>

namespace quorvane {

namespace {

constexpr std::size_t filterBitsPerEntry = 16;

bool isWildcard(const NullableText& path)
{
    return !path.isNull() && (path.view() == "any" || path.view().empty());
}

// The hash of a beginning of a path, which grows by a byte at a time and mixes eight of them at once.
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

// Wildcards stand under the empty path.
std::uint64_t hashOfCoveringPath(const PolicyRuleFields& rule)
{
    PrefixHash hash(rule);
    if (!isWildcard(rule.path)) {
        for (const char byte : rule.path.view())
            hash.extend(byte);
    }
    return hash.value();
}

bool canCover(const PolicyRuleFields& rule)
{
    return isWildcard(rule.path) || (rule.policyType == PolicyType::prefix && !rule.path.isNull());
}

} // namespace

bool coversRule(const PolicyRule& broader, const PolicyRule& rule)
{
    const PolicyRuleFields& wide = broader.fields();
    const PolicyRuleFields& narrow = rule.fields();
    if (wide.policyClass != narrow.policyClass || !isBitwiseInclusive(wide.operations, narrow.operations)
        || !sameText(wide.constraint, narrow.constraint))
        return false;
    return isWildcard(wide.path)
        || (wide.policyType == PolicyType::prefix && !wide.path.isNull()
            && narrow.path.view().starts_with(wide.path.view()));
}

const PolicyRule* CoverIndex::firstCovering(const PolicyRule& rule, const RuleList<PolicyRule>& rules)
{
    bringUpToDate(rules);
    const auto& slots = rules.slots();
    std::size_t found = slots.size();
    const auto lookUp = [&](std::uint64_t hash) {
        if (!mayHold(hash))
            return;
        for (auto entry = m_chains.first(hash); entry != SlotChains::none; entry = m_chains.next(entry)) {
            const std::size_t slot = m_chains.slot(entry);
            if (slot >= found)
                return;
            if (slots[slot] && slots[slot].get() != &rule && coversRule(*slots[slot], rule)) {
                found = slot;
                return;
            }
        }
    };
    PrefixHash hash(rule.fields());
    lookUp(hash.value());
    for (const char byte : rule.fields().path.view()) {
        hash.extend(byte);
        lookUp(hash.value());
    }
    return found < slots.size() ? slots[found].get() : nullptr;
}

void CoverIndex::bringUpToDate(const RuleList<PolicyRule>& rules)
{
    if (m_layout != rules.layout() || m_keyChanges != rules.keyChanges()) {
        *this = {};
        m_layout = rules.layout();
        m_keyChanges = rules.keyChanges();
    }
    const auto& slots = rules.slots();
    for (; m_indexedSlots < slots.size(); ++m_indexedSlots) {
        const PolicyRulePtr& rule = slots[m_indexedSlots];
        if (!rule)
            continue;
        m_isMixed = m_isMixed
            || (slots[0] && !sameText(slots[0]->fields().processName, rule->fields().processName));
        if (!canCover(rule->fields()))
            continue;
        const std::uint64_t hash = hashOfCoveringPath(rule->fields());
        if (!m_isMixed || !isOneOfTooMany(*rule, hash, rules))
            insert(hash, static_cast<std::uint32_t>(m_indexedSlots));
    }
}

// Of rules that cover the same the first two are enough: the second answers for the first. Only in groups of
// several process names can there be many such rules, since otherwise they would be duplicates.
bool CoverIndex::isOneOfTooMany(const PolicyRule& rule, std::uint64_t hash, const RuleList<PolicyRule>& rules)
{
    int alike = 0;
    for (auto entry = m_chains.first(hash); entry != SlotChains::none && alike < 2;
         entry = m_chains.next(entry)) {
        const PolicyRule& other = *rules.slots()[m_chains.slot(entry)];
        if (coversRule(other, rule)
            && isBitwiseInclusive(rule.fields().operations, other.fields().operations))
            ++alike;
    }
    return alike == 2;
}

void CoverIndex::insert(std::uint64_t hash, std::uint32_t slot)
{
    m_chains.insert(hash, slot);
    m_hashes.push_back(hash);
    if (const std::size_t wanted = m_hashes.size() * filterBitsPerEntry; wanted > m_filter.size() * 64)
        rebuildFilter(std::bit_ceil(std::max<std::size_t>(wanted, 512)));
    const std::uint64_t bit = (hash >> 32U) & (m_filter.size() * 64 - 1);
    m_filter[bit / 64] |= std::uint64_t{1} << bit % 64;
}

void CoverIndex::rebuildFilter(std::size_t bits)
{
    m_filter.assign(bits / 64, 0);
    for (const std::uint64_t hash : m_hashes) {
        const std::uint64_t bit = (hash >> 32U) & (bits - 1);
        m_filter[bit / 64] |= std::uint64_t{1} << bit % 64;
    }
}

bool CoverIndex::mayHold(std::uint64_t hash) const
{
    if (m_filter.empty())
        return false;
    const std::uint64_t bit = (hash >> 32U) & (m_filter.size() * 64 - 1);
    return (m_filter[bit / 64] >> bit % 64 & 1U) != 0;
}

} // namespace quorvane
