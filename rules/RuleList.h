#pragma once

#include "rules/PolicyRule.h"
#include "rules/RuleIdentity.h"
#include "rules/SlotChains.h"
#include "rules/WatchRule.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace quorvane {

template <class Rule> using FieldsOf = std::remove_cvref_t<decltype(std::declval<const Rule&>().fields())>;

// Rules of one kind in stored order, which finds the first equal rule without a walk of the list.
//
// A rule's slot is its number in stored order; a removed rule leaves an empty slot until enough of them have
// gathered. The answers are those of a plain walk, also after a rule in the list was changed.
// For the thread that owns the store.
//
// Holds its records: a change of one counts for this list only.
template <class Rule> class RuleList final : private RuleHolder<FieldsOf<Rule>> {
public:
    using RulePtr = std::shared_ptr<Rule>;
    using Fields = FieldsOf<Rule>;

    // `changes` counts the changes of the records of all lists that are given it; it must outlive the list.
    explicit RuleList(std::uint64_t& changes)
        : m_changes(changes)
    {
    }
    ~RuleList() { clear(); }
    RuleList(const RuleList&) = delete;
    RuleList& operator=(const RuleList&) = delete;

    void clear() noexcept
    {
        forEach([this](const RulePtr& rule) { rule->removeHolder(*this); });
        m_slots.clear();
        m_size = 0;
        ++m_layout;
        m_index.reset();
    }

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
        rule->addHolder(*this);
        m_slots.push_back(std::move(rule));
        ++m_size;
    }
    void append(const RulePtr& rule) { append(rule, isIndexed() ? identityHash(*rule) : 0); }

    // Stores `rule` so that it takes that slot, or an empty one in its place.
    void insert(std::size_t slot, const RulePtr& rule)
    {
        if (slot == m_slots.size())
            return append(rule);
        rule->addHolder(*this);
        if (m_slots[slot])
            m_slots.insert(m_slots.begin() + static_cast<std::ptrdiff_t>(slot), rule);
        else
            m_slots[slot] = rule;
        ++m_size;
        ++m_layout;
        m_index.reset();
    }

    // The slot of the first stored rule that `rule` is equal to, and of `rule` itself; noSlot when there is
    // none. `hash` is rule's identityHash().
    static constexpr std::size_t noSlot = SIZE_MAX;
    std::size_t slotOfFirstEqual(const Fields& rule, std::uint64_t hash) const
    {
        return slotOfFirstEqual(rule, hash, [](const Rule&) { return true; });
    }
    std::size_t slotOf(const Rule& rule) const
    {
        return slotOfFirst(identityHash(rule), [&rule](const Rule& stored) { return &stored == &rule; });
    }

    // The first stored rule that `rule` is equal to; null when there is none.
    RulePtr firstEqual(const Fields& rule, std::uint64_t hash) const
    {
        return firstEqual(rule, hash, [](const Rule&) { return true; });
    }
    RulePtr firstEqual(const Rule& rule) const { return firstEqual(rule.fields(), identityHash(rule)); }

    // The first of them that `accepts` answers true for.
    template <class Accepts>
    RulePtr firstEqual(const Fields& rule, std::uint64_t hash, const Accepts& accepts) const
    {
        const std::size_t slot = slotOfFirstEqual(rule, hash, accepts);
        return slot == noSlot ? nullptr : m_slots[slot];
    }

    // Leaves the slot, which must hold a rule, empty. May move rules to other slots.
    void removeAt(std::size_t slot)
    {
        m_slots[slot]->removeHolder(*this);
        m_slots[slot] = nullptr;
        --m_size;
        ++m_layout;
        if (m_slots.size() > 2 * m_size + shortList)
            dropEmptySlots();
    }

    // Changes whenever rules move to other slots or leave theirs.
    std::uint64_t layout() const { return m_layout; }
    // Changes whenever a rule of the list becomes one that is not equal.
    std::uint64_t keyChanges() const { return m_keyChanges; }
    // True when a rule was changed since it was stored so that it may belong to another application group.
    bool hasStrays() const { return m_hasStrays; }

private:
    // Below this length a walk is quicker than an index, and a million short lists need no million indexes.
    static constexpr std::size_t shortList = 16;

    void ruleHasChanged(const RuleHandle<Fields>& rule, const Fields& before) noexcept override
    {
        const Fields& now = rule.fields();
        ++m_changes;
        if (!isEqualRule(before, now))
            ++m_keyChanges;
        if (!isOfSameApplication(before, now))
            m_hasStrays = true;
    }

    bool isIndexed() const
    {
        return m_index && m_indexedSlots == m_slots.size() && m_indexedChanges == m_keyChanges;
    }

    template <class Accepts>
    std::size_t slotOfFirstEqual(const Fields& rule, std::uint64_t hash, const Accepts& accepts) const
    {
        return slotOfFirst(
            hash, [&](const Rule& stored) { return isEqualRule(rule, stored.fields()) && accepts(stored); });
    }

    template <class IsWanted> std::size_t slotOfFirst(std::uint64_t hash, const IsWanted& isWanted) const
    {
        const auto holdsWanted = [&](std::size_t slot) { return m_slots[slot] && isWanted(*m_slots[slot]); };
        if (m_slots.size() <= shortList) {
            for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
                if (holdsWanted(slot))
                    return slot;
            }
            return noSlot;
        }
        bringIndexUpToDate();
        for (auto entry = m_index->first(hash); entry != SlotChains::none; entry = m_index->next(entry)) {
            if (holdsWanted(m_index->slot(entry)))
                return m_index->slot(entry);
        }
        return noSlot;
    }

    void bringIndexUpToDate() const
    {
        if (!m_index || m_indexedChanges != m_keyChanges) {
            m_index = std::make_unique<SlotChains>();
            m_indexedSlots = 0;
            m_indexedChanges = m_keyChanges;
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

    std::uint64_t& m_changes;
    std::vector<RulePtr> m_slots;
    std::size_t m_size = 0;
    bool m_hasStrays = false;
    std::uint64_t m_layout = 0;
    mutable std::unique_ptr<SlotChains> m_index;
    mutable std::size_t m_indexedSlots = 0;
    std::uint64_t m_keyChanges = 0;
    mutable std::uint64_t m_indexedChanges = 0; // m_keyChanges when m_index was made
};

} // namespace quorvane
