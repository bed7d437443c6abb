#include "rules/FoldedColumn.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <cstring> // memmem, too
#include <iterator>

namespace quorvane::rules {

void FoldedColumn::reserve(std::size_t rules, std::size_t bytes)
{
    m_texts.reserve(rules);
    m_keys.reserve(bytes);
}

void FoldedColumn::append(const NullableText& text)
{
    constexpr char separator = '\xFF';
    if (m_texts.empty() || text.view() != m_last.view()) {
        m_texts.push_back({m_keys.size(), m_rules});
        platform::appendSearchKey(m_keys, text.view());
        m_keys.push_back(separator);
        m_last = text;
    }
    ++m_rules;
}

// One memmem() over all keys instead of a search per text. After a hit the scan continues with the next text.
// No hit spans two texts, since the byte between them is in no key.
void FoldedColumn::markContaining(std::string_view key, std::size_t first, std::vector<bool>& marks) const
{
    const auto startsAfter = [](std::size_t place, const Text& text) { return place < text.start; };
    const auto isOfLater = [](std::size_t rule, const Text& text) { return rule < text.firstRule; };
    if (first >= m_rules)
        return;
    auto text = std::prev(std::upper_bound(m_texts.begin(), m_texts.end(), first, isOfLater));
    std::size_t at = text->start;
    while (at < m_keys.size()) {
        const void* hit = memmem(m_keys.data() + at, m_keys.size() - at, key.data(), key.size());
        if (hit == nullptr)
            return;
        const auto place = static_cast<std::size_t>(static_cast<const char*>(hit) - m_keys.data());
        text = std::prev(std::upper_bound(text, m_texts.end(), place, startsAfter));
        const auto next = std::next(text);
        const std::uint32_t end = next == m_texts.end() ? m_rules : next->firstRule;
        std::fill(marks.begin() + text->firstRule, marks.begin() + end, true);
        at = next == m_texts.end() ? m_keys.size() : next->start;
    }
}

} // namespace quorvane::rules
