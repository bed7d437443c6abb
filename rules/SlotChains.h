#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane {

// Finds the slots of a list by hash: a hash table without keys, whose user looks at the slot to see what it
// holds.
//
// Slots of one hash come out in the order in which they went in. Nothing is ever removed; the user skips
// slots that it has emptied. At most 2^32 - 2 entries.
class SlotChains {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    void insert(std::uint64_t hash, std::uint32_t slot)
    {
        m_entries.push_back({static_cast<std::uint32_t>(hash), slot, none});
    }
    void clear();

    // The first entry that may have that hash, and the one after `entry`; `none` at the end.
    std::uint32_t first(std::uint64_t hash);
    std::uint32_t next(std::uint32_t entry) const;
    std::uint32_t slot(std::uint32_t entry) const { return m_entries[entry].slot; }

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
    void linkNewEntries();
    void link(std::uint32_t entry);
    void prefetch(std::uint32_t entry) const;
    std::uint32_t withHash(std::uint32_t hash, std::uint32_t entry) const;

    std::vector<Entry> m_entries;
    std::uint32_t m_linked = 0; // entries; the rest is linked when somebody looks
    std::vector<Chain> m_chains; // a power of two
};

} // namespace quorvane
