#include "rules/FoldedColumn.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <cstring> // memmem, too

namespace quorvane::rules {

void FoldedColumn::reserve(std::size_t texts, std::size_t bytes)
{
    m_starts.reserve(texts);
    m_keys.reserve(bytes);
}

void FoldedColumn::append(std::string_view text)
{
    constexpr char separator = '\xFF';
    m_starts.push_back(m_keys.size());
    platform::appendSearchKey(m_keys, text);
    m_keys.push_back(separator);
}

// One memmem() over all keys instead of a search per text. After a hit the scan continues with the next text.
// No hit spans two texts, since the byte between them is in no key.
void FoldedColumn::markContaining(std::string_view key, std::size_t first, std::vector<bool>& marks) const
{
    const std::size_t count = std::min(m_starts.size(), marks.size());
    if (first >= count)
        return;
    const std::size_t end = count == m_starts.size() ? m_keys.size() : m_starts[count];
    auto text = m_starts.begin() + static_cast<std::ptrdiff_t>(first);
    for (std::size_t at = *text; at < end; at = text == m_starts.end() ? end : *text) {
        const void* hit = memmem(m_keys.data() + at, end - at, key.data(), key.size());
        if (hit == nullptr)
            return;
        const auto place = static_cast<std::size_t>(static_cast<const char*>(hit) - m_keys.data());
        text = std::upper_bound(text, m_starts.end(), place);
        marks[static_cast<std::size_t>(text - m_starts.begin()) - 1] = true;
    }
}

void RepeatedColumn::append(const NullableText& text)
{
    const auto [known, isNew]
        = m_known.try_emplace(text.sharedBytes(), static_cast<std::uint32_t>(m_texts.size()));
    if (isNew) {
        m_texts.push_back(text);
        m_distinct.append(text.view());
    }
    m_textOf.push_back(known->second);
}

void RepeatedColumn::markContaining(std::string_view key, std::size_t first, std::vector<bool>& marks) const
{
    std::vector<bool> isHit(m_texts.size());
    m_distinct.markContaining(key, 0, isHit);
    if (std::find(isHit.begin(), isHit.end(), true) == isHit.end())
        return;
    const std::size_t count = std::min(m_textOf.size(), marks.size());
    for (std::size_t number = first; number < count; ++number) {
        if (isHit[m_textOf[number]])
            marks[number] = true;
    }
}

} // namespace quorvane::rules
