#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::rules {

// Finds the slots of a list by hash: a hash table without keys, whose caller checks what a slot holds.
// Compared to a standard table it halves the memory and the time of a long list. One thread at a time.
//
// Slots of one hash are found in ascending order. Entries are never removed; the caller skips slots that hold
// something else by now. At most 2^32 - 2 entries.
class SlotChains {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    void insert(std::uint64_t hash, std::uint32_t slot);
    std::size_t size() const { return m_entries.size(); }
    // Fetches into the processor's caches what first() and insert() of that hash will need.
    void prefetch(std::uint64_t hash) const;
    // Links new entries, which the next first() would do otherwise. May throw std::bad_alloc; the next
    // first() then allocates nothing.
    void link();

    // The first entry that may have that hash, and the one after `entry`; `none` at the end.
    std::uint32_t first(std::uint64_t hash);
    std::uint32_t next(std::uint32_t entry) const;
    std::uint32_t slot(std::uint32_t entry) const { return m_entries[entry].slot; }
    // Changes the slot of an entry; only if the caller does not rely on the order of slots.
    void setSlot(std::uint32_t entry, std::uint32_t slot) { m_entries[entry].slot = slot; }

private:
    struct Entry {
        std::uint32_t hash; // the low bits
        std::uint32_t slot;
        std::uint32_t next;
    };
    struct Chain {
        std::uint32_t first = none;
        std::uint32_t last = none;
    };
    void linkEntry(std::uint32_t entry);
    std::uint32_t withHash(std::uint32_t hash, std::uint32_t entry) const;

    std::vector<Entry> m_entries;
    std::uint32_t m_linked = 0; // entries; the rest is linked by the next first()
    std::vector<Chain> m_chains; // as many as a power of two
};

} // namespace quorvane::rules
