#pragma once

#include "rules/NullableText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quorvane::rules {

// The values of one sort key, in the order of the positions to be sorted, laid out for comparison in slices.
// One thread at a time.
class SortColumn {
public:
    static constexpr std::size_t sliceLength = 8; // bytes of a text

    // A value, or eight bytes of a text, as a number that compares like it.
    struct Slice {
        std::uint64_t value;
        std::uint32_t place;
        std::uint32_t rest; // 0 for absent, else one more than the bytes left from the slice on, at most 10

        bool ties(const Slice& other) const { return value == other.value && rest == other.rest; }
        bool keyGoesOn(bool ascending) const { return (ascending ? rest : ~rest) == longRest; }
        friend bool operator<(const Slice& a, const Slice& b)
        {
            if (a.value != b.value)
                return a.value < b.value;
            return a.rest != b.rest ? a.rest < b.rest : a.place < b.place;
        }
    };

    explicit SortColumn(std::size_t values);

    void appendAbsent();
    void appendNumber(std::int64_t number);
    void appendUnsigned(std::uint64_t number);
    void appendText(const NullableText& text);

    // Loads the slices of the given positions, from byte `depth` of the texts on, and sorts them. Slices that
    // tie are left in the order of their positions.
    void loadSlices(std::vector<Slice>::iterator begin, std::vector<Slice>::iterator end, std::size_t depth,
        bool ascending) const;

    // Compares the values of the first two positions: negative, 0 or positive.
    int compareFirstTwo() const;

private:
    static constexpr std::uint32_t longRest = sliceLength + 2;
    enum class Kind : std::uint8_t { absent, number, text };
    struct Value {
        std::uint64_t number; // for a text: its start in m_texts
        std::uint32_t length; // of a text
        Kind kind;
    };
    Slice sliceOf(std::uint32_t place, std::size_t depth) const;

    std::vector<Value> m_values;
    std::string m_texts; // case folded
};

} // namespace quorvane::rules
