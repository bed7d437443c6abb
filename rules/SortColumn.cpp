#include "rules/SortColumn.h"

#include "platform/Unicode.h"
#include "rules/Prefetch.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>

namespace quorvane::rules {

SortColumn::SortColumn(std::size_t values)
{
    m_values.reserve(values);
}

void SortColumn::appendAbsent()
{
    m_values.push_back({0, 0, Kind::absent});
}

void SortColumn::appendNumber(std::int64_t number)
{
    constexpr std::uint64_t signBit = std::uint64_t{1} << 63U;
    appendUnsigned(static_cast<std::uint64_t>(number) ^ signBit);
}

void SortColumn::appendUnsigned(std::uint64_t number)
{
    m_values.push_back({number, 0, Kind::number});
}

void SortColumn::appendText(const NullableText& text)
{
    if (text.isNull())
        return appendAbsent();
    constexpr std::size_t roomForText = 64; // bytes; reserved memory that is never touched costs nothing
    if (m_texts.empty())
        m_texts.reserve(m_values.capacity() * roomForText);
    const std::size_t start = m_texts.size();
    platform::appendFoldedCase(m_texts, text.view());
    m_values.push_back({start, static_cast<std::uint32_t>(m_texts.size() - start), Kind::text});
}

SortColumn::Slice SortColumn::sliceOf(std::uint32_t place, std::size_t depth) const
{
    const Value& value = m_values[place];
    if (value.kind == Kind::absent)
        return {0, place, 0};
    if (value.kind == Kind::number)
        return {value.number, place, 1};
    const std::size_t left = value.length - depth;
    const char* bytes = m_texts.data() + value.number + depth;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, std::min(left, sliceLength));
    if constexpr (std::endian::native == std::endian::little)
        word = __builtin_bswap64(word);
    return {word, place, static_cast<std::uint32_t>(std::min<std::size_t>(left + 1, longRest))};
}

int SortColumn::compareFirstTwo() const
{
    const auto textOf = [this](const Value& value) {
        return std::string_view(m_texts).substr(value.kind == Kind::text ? value.number : 0, value.length);
    };
    const Value& a = m_values[0];
    const Value& b = m_values[1];
    if (a.kind != b.kind)
        return a.kind < b.kind ? -1 : 1;
    if (a.kind == Kind::text)
        return textOf(a).compare(textOf(b));
    return a.number == b.number ? 0 : a.number < b.number ? -1 : 1;
}

void SortColumn::loadSlices(std::vector<Slice>::iterator begin, std::vector<Slice>::iterator end,
    std::size_t depth, bool ascending) const
{
    const auto load = [&](std::size_t number) {
        Slice& slice = begin[static_cast<std::ptrdiff_t>(number)];
        slice = sliceOf(slice.place, depth);
        if (!ascending) {
            slice.value = ~slice.value;
            slice.rest = ~slice.rest;
        }
    };
    const auto valueAt = [&](std::size_t number) -> const Value& {
        return m_values[begin[static_cast<std::ptrdiff_t>(number)].place];
    };
    forEachPrefetched(
        static_cast<std::size_t>(end - begin), load,
        [&](std::size_t number) { prefetchMemory(&valueAt(number)); },
        [&](std::size_t number) {
            if (const Value& value = valueAt(number); value.kind == Kind::text)
                prefetchMemory(m_texts.data() + value.number + depth);
        });
    const bool allTie = std::all_of(begin, end, [&](const Slice& slice) { return slice.ties(*begin); });
    if (!allTie)
        std::sort(begin, end);
}

} // namespace quorvane::rules
