#include "workflow/StateDict.h"

namespace quorvane::workflow {

std::optional<int> StateDict::entry(const std::string& sequence) const
{
    const auto found = m_entries.find(sequence);
    return found == m_entries.end() ? m_common : found->second;
}

bool StateDict::isTicked(std::int64_t sequence) const
{
    return entry(std::to_string(sequence)) != unticked;
}

void StateDict::setTicked(std::int64_t sequence, bool isTicked)
{
    const bool othersAreTicked = m_common != unticked;
    const auto [place, isNew]
        = m_entries.try_emplace(std::to_string(sequence), othersAreTicked ? ticked : unticked);
    const int state = isTicked ? ticked : unticked;
    if (place->second == state)
        return;
    m_exceptions += isTicked == othersAreTicked ? std::size_t(-1) : 1;
    place->second = state;
}

void StateDict::setAllTicked(bool areTicked)
{
    m_common = areTicked ? ticked : unticked;
    m_entries.clear();
    m_exceptions = 0;
}

std::size_t StateDict::countOfTicked(std::size_t rules) const
{
    return m_common == unticked ? m_exceptions : rules - m_exceptions;
}

} // namespace quorvane::workflow
