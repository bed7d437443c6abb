#pragma once

#include "rules/AddressSet.h"
#include "rules/PolicyRule.h"
#include "rules/Prefetch.h"
#include "rules/RowNumbers.h"
#include "rules/RuleExceptions.h"
#include "rules/RuleIdentity.h"
#include "rules/SlotChains.h"
#include "rules/WatchRule.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace quorvane::rules {

template <class Rule> using FieldsOf = std::remove_cvref_t<decltype(std::declval<const Rule&>().fields())>;

// Maintains data derived from the rules of a list, by slot.
template <class Fields> class SlotObserver {
public:
    virtual ~SlotObserver() = default;

    // Called after a rule with these properties was put into the slot, or is being removed from it.
    virtual void slotIsFilled(std::size_t slot, const Fields& rule) noexcept = 0;
    virtual void slotIsEmptied(std::size_t slot, const Fields& rule) noexcept = 0;
    // Called after rules have moved to other slots, or after many were removed at once.
    virtual void slotsHaveMoved() noexcept = 0;
    // Called after a stored rule has changed so that it may belong to another application group.
    virtual void ruleHasStrayed() noexcept = 0;
};

// Rules of one kind in stored order, with an index that finds the first equal rule without a scan.
//
// A rule's slot is its number in stored order; a removed rule leaves an empty slot until enough of them have
// accumulated. Derived data is updated incrementally, and results are those of a plain scan. Registers as
// holder of its records, so that it is notified of their changes. For the thread that owns the store.
template <class Rule> class RuleList final : private RuleHolder<FieldsOf<Rule>> {
public:
    using RulePtr = std::shared_ptr<Rule>;
    using Fields = FieldsOf<Rule>;
    static constexpr std::size_t noSlot = SIZE_MAX;

    // All must outlive the list; the observer may be null. Notes in `exceptions` rules that do not equal
    // themselves.
    RuleList(RowNumbers& numbers, RuleExceptions& exceptions, SlotObserver<Fields>* observer = nullptr)
        : m_rowNumbers(numbers)
        , m_exceptions(exceptions)
        , m_observer(observer)
    {
    }
    ~RuleList() override
    {
        if (!m_hasLeftRecords)
            clear();
    }

    // The list with these row numbers that stores the record; null when there is none. Takes no search.
    static RuleList* holding(const Rule& rule, const RowNumbers& numbers)
    {
        return static_cast<RuleList*>(rule.holderWhere([&numbers](const RuleHolder<Fields>& holder) {
            return &static_cast<const RuleList&>(holder).m_rowNumbers == &numbers;
        }));
    }

    RuleList(const RuleList&) = delete;
    RuleList& operator=(const RuleList&) = delete;

    void clear() noexcept
    {
        for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
            if (m_slots[slot])
                leave(slot);
        }
        m_slots.clear();
        m_numbers.clear();
        slotsHaveMoved();
    }

    std::size_t size() const { return m_size; }
    // Fetch into the processor's caches what an append() will need, and then what the search for a rule equal
    // to one of that hash will.
    void prefetch() const
    {
        prefetchMemory(m_slots.data() + m_slots.size());
        prefetchMemory(m_numbers.data() + m_numbers.size());
        if (m_index)
            prefetchObject(*m_index);
    }
    void prefetch(std::uint64_t hash) const
    {
        if (m_index)
            m_index->prefetch(hash);
    }

    // Null where a rule was removed.
    const std::vector<RulePtr>& slots() const { return m_slots; }
    // The row numbers of the slots; RowNumbers::none of empty ones.
    const std::vector<std::uint32_t>& numbers() const { return m_numbers; }

    template <class Use> void forEach(Use use) const
    {
        forEachPrefetchedRule(
            m_slots.size(),
            [&](std::size_t slot) {
                if (m_slots[slot])
                    use(m_slots[slot]);
            },
            [&](std::size_t slot, const auto& fetch) {
                if (m_slots[slot])
                    fetch(*m_slots[slot]);
            });
    }

    // Allocates all memory that an insert() of `rule` needs; when it throws, nothing has changed. Must be
    // followed by insert() or forget().
    void prepare(const Rule& rule)
    {
        makeRoom(m_slots, m_prepared + 1);
        makeRoom(m_numbers, m_prepared + 1);
        rule.addHolder(*this);
        noteExceptions(rule.fields());
        ++m_prepared;
    }
    void forget(const Rule& rule) noexcept
    {
        rule.removeHolder(*this);
        --m_prepared;
    }

    // Stores a prepared rule in that slot: fills it when it is empty, else inserts a slot before it. `hash`
    // is the rule's identityHash().
    void insert(std::size_t slot, RulePtr rule, std::uint64_t hash) noexcept
    {
        const std::uint32_t number = m_rowNumbers.add(rule);
        const auto place = static_cast<std::ptrdiff_t>(slot);
        const bool isFree = slot < m_slots.size() && !m_slots[slot];
        if (slot < m_slots.size() && !isFree)
            slotsHaveMoved();
        m_lastEmptied = {};
        if (isFree) {
            m_slots[slot] = std::move(rule);
            m_numbers[slot] = number;
        } else {
            m_slots.insert(m_slots.begin() + place, std::move(rule));
            m_numbers.insert(m_numbers.begin() + place, number);
        }
        ++m_size;
        --m_prepared;
        if (m_index)
            index(slot, hash);
        if (m_observer != nullptr)
            m_observer->slotIsFilled(slot, m_slots[slot]->fields());
    }

    void append(RulePtr rule, std::uint64_t hash)
    {
        prepare(*rule);
        insert(m_slots.size(), std::move(rule), hash);
    }
    void append(const RulePtr& rule) { append(rule, identityHash(*rule)); }

    // Stores prepared rules at once, in time independent of their positions: `order` is the whole new list in
    // stored order; rules already stored bring their row numbers, new ones have none.
    struct Placed {
        RulePtr rule;
        std::uint32_t number = RowNumbers::none;
    };
    void insertAll(std::vector<Placed> order) noexcept
    {
        m_slots.clear();
        m_numbers.clear();
        for (Placed& placed : order) {
            const bool isNew = placed.number == RowNumbers::none;
            m_numbers.push_back(isNew ? m_rowNumbers.add(placed.rule) : placed.number);
            m_slots.push_back(std::move(placed.rule));
            m_prepared -= isNew ? 1 : 0;
        }
        m_size = order.size();
        slotsHaveMoved();
    }

    // Empties the slot, which must hold a rule. May move rules to other slots.
    void removeAt(std::size_t slot) noexcept
    {
        m_lastEmptied = {slot, previous(slot)};
        if (m_observer != nullptr)
            m_observer->slotIsEmptied(slot, m_slots[slot]->fields());
        leave(slot);
        m_slots[slot] = nullptr;
        m_numbers[slot] = RowNumbers::none;
        dropEmptySlotsIfMany();
    }

    // Removes all rules whose addresses are in `leaving`, in stored order; calls `use` with each of them and
    // with the nearest rule before it that stays, null when there is none. May move rules to other slots.
    template <class Use> void removeAll(const AddressSet& leaving, const Use& use) noexcept
    {
        const std::size_t former = m_size;
        const RulePtr* previous = nullptr;
        const auto remove = [&](std::size_t slot) {
            RulePtr& rule = m_slots[slot];
            if (rule && !leaving.contains(rule.get()))
                previous = &rule;
            if (!rule || previous == &rule)
                return;
            leave(slot);
            m_numbers[slot] = RowNumbers::none;
            use(std::exchange(rule, nullptr), previous);
        };
        forEachPrefetched(m_slots.size(), remove, [&](std::size_t slot) {
            leaving.prefetch(m_slots[slot].get());
            prefetchMemory(m_slots[slot].get());
        });
        if (m_size == former)
            return;
        m_lastEmptied = {};
        if (m_observer != nullptr)
            m_observer->slotsHaveMoved();
        dropEmptySlotsIfMany();
    }

    // Moves out the first stored rule that `rule` is equal to; null when there is none. Only for a list about
    // to be destroyed: nothing else is updated.
    RulePtr take(const Fields& rule, std::uint64_t hash)
    {
        const std::size_t slot = slotOfFirstEqual(rule, hash);
        if (slot == noSlot)
            return nullptr;
        leave(slot);
        return std::move(m_slots[slot]);
    }

    // For a list that takes over records of another one, StoreSuccession.h: puts the record into the slot
    // instead of the one there, which is equal to it, and does not touch it. Must be followed by hold().
    void replaceRecord(std::size_t slot, RulePtr rule) noexcept
    {
        m_slots[slot]->removeHolder(*this);
        m_slots[slot] = std::move(rule);
    }
    void hold(const Rule& rule) { rule.addHolder(*this); }
    void release(const Rule& rule) const noexcept { rule.removeHolder(*this); }
    // Whether its records belong to another list, or thread, and are not touched when it is destroyed.
    void setHasLeftRecords(bool hasLeft) noexcept { m_hasLeftRecords = hasLeft; }

    // The nearest slot before `slot` that holds a rule; noSlot when there is none.
    std::size_t previous(std::size_t slot) const
    {
        while (slot-- > 0) {
            if (m_slots[slot])
                return slot;
            if (slot == m_lastEmptied.slot) // skips the slots emptied by a run of removals
                return m_lastEmptied.previous;
        }
        return noSlot;
    }

    // The slot of the first stored rule that `rule` is equal to, and of `rule` itself; noSlot when there is
    // none. `hash` is rule's identityHash().
    std::size_t slotOfFirstEqual(const Fields& rule, std::uint64_t hash) const
    {
        return slotOfFirst(hash, [&](const Rule& stored) { return isEqualRule(rule, stored.fields()); });
    }
    std::size_t slotOf(const Rule& rule) const
    {
        return slotOfFirst(identityHash(rule), [&](const Rule& stored) { return &stored == &rule; });
    }

    // The first stored rule that `rule` is equal to; null when there is none.
    RulePtr firstEqual(const Fields& rule, std::uint64_t hash) const
    {
        return firstEqual(rule, hash, [](const Rule&) { return true; });
    }
    RulePtr firstEqual(const Rule& rule) const { return firstEqual(rule.fields(), identityHash(rule)); }

    // The first of them for which `accepts` is true.
    template <class Accepts>
    RulePtr firstEqual(const Fields& rule, std::uint64_t hash, const Accepts& accepts) const
    {
        const std::size_t slot = slotOfFirst(
            hash, [&](const Rule& stored) { return isEqualRule(rule, stored.fields()) && accepts(stored); });
        return slot == noSlot ? nullptr : m_slots[slot];
    }

    // Gives all rules new row numbers.
    void numberAfresh() noexcept
    {
        for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
            if (m_slots[slot])
                m_numbers[slot] = m_rowNumbers.add(m_slots[slot]);
        }
    }

private:
    // Up to this length a scan is faster than an index, and a million short lists need no million indexes.
    static constexpr std::size_t shortList = 16;

    template <class Element> static void makeRoom(std::vector<Element>& elements, std::size_t more)
    {
        if (elements.size() + more > elements.capacity())
            elements.reserve(std::max(elements.size() + more, 2 * elements.size()));
    }

    void noteExceptions(const Fields& rule) noexcept
    {
        m_exceptions.incomparable = m_exceptions.incomparable || !equalsItself(rule);
    }

    void leave(std::size_t slot) noexcept
    {
        m_slots[slot]->removeHolder(*this);
        m_rowNumbers.remove(m_numbers[slot]);
        --m_size;
    }

    void ruleHasChanged(const RuleHandle<Fields>& rule, const Fields& before) noexcept override
    {
        const Fields& now = rule.fields();
        noteExceptions(now);
        const std::uint64_t hashBefore = identityHash(before);
        const std::uint64_t hash = identityHash(now);
        bool isFound = false;
        const auto follow = [&](std::size_t slot) {
            if (m_slots[slot].get() != &rule)
                return;
            isFound = true;
            if (m_observer != nullptr && !isOfSameApplication(before, now))
                m_observer->ruleHasStrayed();
            m_numbers[slot] = m_rowNumbers.renew(m_numbers[slot]);
            if (isEqualRule(before, now))
                return;
            if (m_index)
                index(slot, hash);
            if (m_observer != nullptr) {
                m_observer->slotIsEmptied(slot, before);
                m_observer->slotIsFilled(slot, now);
            }
        };
        const auto followAll = [&](std::uint64_t under) {
            anySlot(under, [&](std::size_t slot) {
                follow(slot);
                return false;
            });
        };
        followAll(hashBefore);
        if (!isFound) // indexed only now, under its new value
            followAll(hash);
    }

    // Short lists, and those without memory for an index, are scanned.
    template <class IsWanted> std::size_t slotOfFirst(std::uint64_t hash, const IsWanted& isWanted) const
    {
        return anySlot(hash, [&](std::size_t slot) { return m_slots[slot] && isWanted(*m_slots[slot]); });
    }

    // Of the slots that may hold a rule of that hash, the first for which `isIt` is true.
    template <class IsIt> std::size_t anySlot(std::uint64_t hash, const IsIt& isIt) const
    {
        if (m_slots.size() <= shortList || !bringIndexUpToDate()) {
            for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
                if (isIt(slot))
                    return slot;
            }
            return noSlot;
        }
        for (auto entry = m_index->first(hash); entry != SlotChains::none;
             entry = m_index ? m_index->next(entry) : SlotChains::none) {
            const std::size_t slot = m_index->slot(entry);
            if (isIt(slot))
                return slot;
        }
        return noSlot;
    }

    bool bringIndexUpToDate() const noexcept
    {
        try {
            if (!m_index || m_index->size() > 2 * m_slots.size() + shortList) {
                m_index = std::make_unique<SlotChains>();
                m_indexedSlots = 0;
            }
            for (; m_indexedSlots < m_slots.size(); ++m_indexedSlots) {
                if (const RulePtr& rule = m_slots[m_indexedSlots])
                    m_index->insert(identityHash(*rule), static_cast<std::uint32_t>(m_indexedSlots));
            }
            m_index->link();
            return true;
        } catch (const std::bad_alloc&) {
            m_index.reset();
            return false;
        }
    }

    // Slots beyond the indexed ones are added by bringIndexUpToDate().
    void index(std::size_t slot, std::uint64_t hash) noexcept
    {
        try {
            if (slot <= m_indexedSlots)
                m_index->insert(hash, static_cast<std::uint32_t>(slot));
            if (slot == m_indexedSlots)
                ++m_indexedSlots;
        } catch (const std::bad_alloc&) {
            m_index.reset();
        }
    }

    void dropEmptySlotsIfMany() noexcept
    {
        if (m_slots.size() <= 2 * m_size + shortList)
            return;
        std::size_t kept = 0;
        for (std::size_t slot = 0; slot < m_slots.size(); ++slot) {
            if (!m_slots[slot])
                continue;
            m_numbers[kept] = m_numbers[slot];
            m_slots[kept++] = std::move(m_slots[slot]);
        }
        m_slots.resize(kept);
        m_numbers.resize(kept);
        slotsHaveMoved();
    }

    void slotsHaveMoved() noexcept
    {
        m_index.reset();
        m_lastEmptied = {};
        if (m_observer != nullptr)
            m_observer->slotsHaveMoved();
    }

    struct Emptied {
        std::size_t slot = noSlot;
        std::size_t previous = noSlot;
    };

    RowNumbers& m_rowNumbers;
    RuleExceptions& m_exceptions;
    SlotObserver<Fields>* m_observer;
    std::vector<RulePtr> m_slots;
    std::vector<std::uint32_t> m_numbers; // of the slots
    std::size_t m_size = 0;
    std::size_t m_prepared = 0; // rules that are about to be inserted
    bool m_hasLeftRecords = false;
    Emptied m_lastEmptied;
    mutable std::unique_ptr<SlotChains> m_index; // of slots by identityHash()
    mutable std::size_t m_indexedSlots = 0;
};

} // namespace quorvane::rules
