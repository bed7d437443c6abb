#pragma once

#include "rules/PolicyRule.h"
#include "rules/SlotChains.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quorvane {

// A hash of the properties that take part in rule equality.
std::uint64_t identityHash(const PolicyRule& rule);
std::uint64_t identityHash(const WatchRule& rule);

inline bool isEqualRule(const PolicyRule& a, const PolicyRule& b)
{
    return a.isEqualToPolicyRule(b);
}
inline bool isEqualRule(const WatchRule& a, const WatchRule& b)
{
    return a.isEqualToWatchRule(b);
}

// Rules of one kind in stored order, which finds the first equal rule without a walk of the list.
//
// A rule's slot is its number in stored order; a removed rule leaves an empty slot until enough of them have
// gathered. The answers are those of a plain walk, also after a rule in the list was changed.
// For the thread that owns the store.
template <class Rule> class RuleList {
public:
    using RulePtr = std::shared_ptr<Rule>;

    std::size_t size() const { return m_size; }
    // Null where a rule was removed.
    const std::vector<RulePtr>& slots() const { return m_slots; }

    template <class Use> void forEach(Use use) const
    {
        for (const RulePtr& rule : m_slots) {
            if (rule)
                use(rule);
        }
    }

    // `hash` is the rule's identityHash().
    void append(RulePtr rule, std::uint64_t hash)
    {
        if (isIndexed()) {
            m_index->insert(hash, static_cast<std::uint32_t>(m_slots.size()));
            ++m_indexedSlots;
        }
        rule->noteKept();
        m_slots.push_back(std::move(rule));
        ++m_size;
    }
    void append(const RulePtr& rule) { append(rule, isIndexed() ? identityHash(*rule) : 0); }

    // The first stored rule that `rule` is equal to; null when there is none. `hash` is rule's
    // identityHash().
    RulePtr firstEqual(const Rule& rule, std::uint64_t hash) const
    {
        return firstEqual(rule, hash, [](const Rule&) { return true; });
    }
    RulePtr firstEqual(const Rule& rule) const { return firstEqual(rule, identityHash(rule)); }

    // The first of them that `accepts` answers true for.
    template <class Accepts>
    RulePtr firstEqual(const Rule& rule, std::uint64_t hash, const Accepts& accepts) const
    {
        const std::size_t slot = slotOfFirstEqual(rule, hash, accepts);
        return slot < m_slots.size() ? m_slots[slot] : nullptr;
    }

    // Removes the first stored rule that `rule` is equal to; false when there is none.
    bool removeFirstEqual(const Rule& rule)
    {
        return removeFirstEqual(rule, [](const Rule&) { return true; });
    }
    // Removes `rule` itself; false when it is not stored.
    bool remove(const Rule& rule)
    {
        return removeFirstEqual(rule, [&rule](const Rule& stored) { return &stored == &rule; });
    }

    // Changes whenever rules move to other slots or leave theirs.
    std::uint64_t layout() const { return m_layout; }

private:
    // Below this length a walk is quicker than an index, and a million short lists need no million indexes.
    static constexpr std::size_t shortList = 16;

    template <class Accepts> bool removeFirstEqual(const Rule& rule, const Accepts& accepts)
    {
        const std::size_t slot = slotOfFirstEqual(rule, identityHash(rule), accepts);
        if (slot == m_slots.size())
            return false;
        m_slots[slot] = nullptr;
        --m_size;
        ++m_layout;
        if (m_slots.size() > 2 * m_size + shortList)
            dropEmptySlots();
        return true;
    }

    bool isIndexed() const
    {
        return m_index && m_indexedSlots == m_slots.size() && m_keyChanges == Rule::keyChanges();
    }

    template <class Accepts>
    std::size_t slotOfFirstEqual(const Rule& rule, std::uint64_t hash, const Accepts& accepts) const
    {
        const auto isWanted
            = [&](const RulePtr& stored) { return stored && isEqualRule(rule, *stored) && accepts(*stored); };
        if (m_slots.size() <= shortList) {
            std::size_t slot = 0;
            while (slot < m_slots.size() && !isWanted(m_slots[slot]))
                ++slot;
            return slot;
        }
        bringIndexUpToDate();
        for (auto entry = m_index->first(hash); entry != SlotChains::none; entry = m_index->next(entry)) {
            const std::size_t slot = m_index->slot(entry);
            if (isWanted(m_slots[slot]))
                return slot;
        }
        return m_slots.size();
    }

    void bringIndexUpToDate() const
    {
        if (!m_index || m_keyChanges != Rule::keyChanges()) {
            m_index = std::make_unique<SlotChains>();
            m_indexedSlots = 0;
            m_keyChanges = Rule::keyChanges();
        }
        for (; m_indexedSlots < m_slots.size(); ++m_indexedSlots) {
            if (const RulePtr& rule = m_slots[m_indexedSlots])
                m_index->insert(identityHash(*rule), static_cast<std::uint32_t>(m_indexedSlots));
        }
    }

    void dropEmptySlots()
    {
        std::erase(m_slots, nullptr);
        m_index.reset();
    }

    std::vector<RulePtr> m_slots;
    std::size_t m_size = 0;
    std::uint64_t m_layout = 0;
    mutable std::unique_ptr<SlotChains> m_index;
    mutable std::size_t m_indexedSlots = 0;
    mutable std::uint64_t m_keyChanges = 0;
};

} // namespace quorvane
