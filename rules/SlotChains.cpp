#include "rules/SlotChains.h"

#include <algorithm>
#include <bit>

namespace quorvane {

void SlotChains::clear()
{
    m_entries.clear();
    m_chains.clear();
    m_linked = 0;
}

void SlotChains::linkNewEntries()
{
    const auto total = static_cast<std::uint32_t>(m_entries.size());
    if (total > m_chains.size()) {
        constexpr std::size_t fewestChains = 16;
        m_chains.assign(std::max(std::bit_ceil(m_entries.size()), fewestChains), {});
        m_linked = 0;
    }
    for (; m_linked < total; ++m_linked) {
        prefetch(m_linked);
        link(m_linked);
    }
}

// Chains lie all over the memory: fetches what the entries some way ahead will touch.
void SlotChains::prefetch(std::uint32_t entry) const
{
    constexpr std::uint32_t ahead = 16;
    if (entry + 2 * ahead >= m_entries.size())
        return;
    const auto chainOf
        = [this](std::uint32_t e) { return &m_chains[m_entries[e].hash & (m_chains.size() - 1)]; };
    __builtin_prefetch(chainOf(entry + 2 * ahead), 1);
    if (const std::uint32_t last = chainOf(entry + ahead)->last; last != none)
        __builtin_prefetch(&m_entries[last], 1);
}

void SlotChains::link(std::uint32_t entry)
{
    Chain& chain = m_chains[m_entries[entry].hash & (m_chains.size() - 1)];
    m_entries[entry].next = none;
    if (chain.first == none)
        chain.first = entry;
    else
        m_entries[chain.last].next = entry;
    chain.last = entry;
}

std::uint32_t SlotChains::first(std::uint64_t hash)
{
    if (m_entries.empty())
        return none;
    if (m_linked < m_entries.size())
        linkNewEntries();
    const auto low = static_cast<std::uint32_t>(hash);
    return withHash(low, m_chains[low & (m_chains.size() - 1)].first);
}

std::uint32_t SlotChains::next(std::uint32_t entry) const
{
    return withHash(m_entries[entry].hash, m_entries[entry].next);
}

std::uint32_t SlotChains::withHash(std::uint32_t hash, std::uint32_t entry) const
{
    while (entry != none && m_entries[entry].hash != hash)
        entry = m_entries[entry].next;
    return entry;
}

} // namespace quorvane
