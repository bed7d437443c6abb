#include "rules/RowNumbers.h"

#include <new>
#include <utility>

namespace quorvane::rules {

std::uint32_t RowNumbers::add(RuleRef rule) noexcept
{
    try {
        m_rules.makeRoom();
        m_isStored.push_back(true);
    } catch (const std::bad_alloc&) {
        m_isLost = true;
        return none;
    }
    m_rules.append(std::move(rule));
    ++m_stored;
    return static_cast<std::uint32_t>(m_rules.size() - 1);
}

void RowNumbers::remove(std::uint32_t number) noexcept
{
    if (number >= m_isStored.size() || !m_isStored[number])
        return;
    m_isStored[number] = false;
    --m_stored;
}

std::uint32_t RowNumbers::renew(std::uint32_t number) noexcept
{
    if (number >= m_settled)
        return number;
    const std::uint32_t renewed = add(m_rules[number]);
    remove(number);
    return renewed;
}

bool RowNumbers::mustStartAfresh() const
{
    constexpr std::size_t fewNumbers = 4096;
    return m_isLost || m_rules.size() > 2 * m_stored + fewNumbers;
}

void RowNumbers::clear()
{
    *this = {};
}

} // namespace quorvane::rules
