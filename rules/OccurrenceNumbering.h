#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quorvane::rules {

// Distinguishes equal things that occur more than once in a list: the first occurrence gets the same number
// in every list, the second one another, and so on. One thread at a time.
class OccurrenceNumbering {
public:
    void beginList() { std::fill(m_latest.begin(), m_latest.end(), none); }

    // The number of the next `thing` of the list; numbers are consecutive from 0, and things should be too.
    std::uint32_t numberOf(std::uint32_t thing)
    {
        while (thing >= m_latest.size()) {
            m_latest.push_back(none);
            m_first.push_back(none);
        }
        std::uint32_t& latest = m_latest[thing];
        std::uint32_t& number = latest == none ? m_first[thing] : m_following[latest];
        if (number != none)
            return latest = number;
        latest = number = static_cast<std::uint32_t>(m_following.size());
        m_following.push_back(none);
        return latest;
    }

private:
    static constexpr std::uint32_t none = UINT32_MAX;

    std::vector<std::uint32_t> m_first; // by thing: the number of the first one of a list
    std::vector<std::uint32_t> m_latest; // by thing: the number of the latest one of this list
    std::vector<std::uint32_t> m_following; // by number: that of the next one
};

} // namespace quorvane::rules
