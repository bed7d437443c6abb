#include "rules/SlotChains.h"

#include "rules/Prefetch.h"

#include <algorithm>
#include <bit>

namespace quorvane::rules {

void SlotChains::insert(std::uint64_t hash, std::uint32_t slot)
{
    m_entries.push_back({static_cast<std::uint32_t>(hash), slot, none});
}

void SlotChains::prefetch(std::uint64_t hash) const
{
    prefetchMemory(m_entries.data() + m_entries.size());
    if (!m_chains.empty())
        prefetchMemory(&m_chains[static_cast<std::uint32_t>(hash) & (m_chains.size() - 1)]);
}

void SlotChains::link()
{
    const auto total = static_cast<std::uint32_t>(m_entries.size());
    if (total > m_chains.size()) {
        constexpr std::size_t fewestChains = 16;
        m_chains.assign(std::max(std::bit_ceil(m_entries.size()), fewestChains), {});
        m_linked = 0;
    }
    for (; m_linked < total; ++m_linked)
        linkEntry(m_linked);
}

// Appends to the chain, or inserts where the order of slots requires it.
void SlotChains::linkEntry(std::uint32_t entry)
{
    Entry& added = m_entries[entry];
    Chain& chain = m_chains[added.hash & (m_chains.size() - 1)];
    const auto goesBefore = [&](std::uint32_t other) { return other == none || added.slot < slot(other); };
    if (chain.last == none || !goesBefore(chain.last)) {
        added.next = none;
        (chain.last == none ? chain.first : m_entries[chain.last].next) = entry;
        chain.last = entry;
        return;
    }
    std::uint32_t* place = &chain.first;
    while (!goesBefore(*place))
        place = &m_entries[*place].next;
    added.next = *place;
    *place = entry;
}

std::uint32_t SlotChains::first(std::uint64_t hash)
{
    if (m_entries.empty())
        return none;
    if (m_linked < m_entries.size())
        link();
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

} // namespace quorvane::rules
