#include "rules/SlotChains.h"

namespace quorvane {

void SlotChains::insert(std::uint64_t hash, std::uint32_t slot)
{
    const auto entry = static_cast<std::uint32_t>(m_entries.size());
    m_entries.push_back({static_cast<std::uint32_t>(hash), slot, none});
    if (m_entries.size() <= m_chains.size()) {
        link(entry);
        return;
    }
    m_chains.assign(m_chains.empty() ? 16 : m_chains.size() * 2, {});
    for (std::uint32_t e = 0; e <= entry; ++e)
        link(e);
}

void SlotChains::clear()
{
    m_entries.clear();
    m_chains.clear();
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

std::uint32_t SlotChains::first(std::uint64_t hash) const
{
    if (m_chains.empty())
        return none;
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
