#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::rules {

// Finds the slots of a list by hash: a hash table without keys, whose user looks at the slot to see what it
// holds. In place of a standard table it halves the memory and the time of a long list.
//
// Slots of one hash come out in ascending order. Nothing is ever removed; the user skips slots that hold
// something else by now. At most 2^32 - 2 entries.
class SlotChains {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    void insert(std::uint64_t hash, std::uint32_t slot);
    std::size_t size() const { return m_entries.size(); }
    // Does what the next look would do first, and so may need memory, which the look does not then.
    void link();

    // The first entry that may have that hash, and the one after `entry`; `none` at the end.
    std::uint32_t first(std::uint64_t hash);
    std::uint32_t next(std::uint32_t entry) const;
    std::uint32_t slot(std::uint32_t entry) const { return m_entries[entry].slot; }
    // For a user who keeps no order of slots: what the entry leads to from now on.
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
    std::uint32_t m_linked = 0; // entries; the rest is linked when somebody looks
    std::vector<Chain> m_chains; // a power of two
};

} // namespace quorvane::rules
