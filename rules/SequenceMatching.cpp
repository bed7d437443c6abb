#include "rules/SequenceMatching.h"

#include "rules/AscendingRun.h"

#include <algorithm>
#include <cstddef>

// Patience diff: the common beginning and end of a range of both sequences are matched; elements that occur
// once in both are reduced to their longest common order, and each range between two of them is matched
// recursively. Where no element is unique, Myers' greedy algorithm finds the fewest differences, up to a
// bound.

namespace quorvane::rules {

namespace {

constexpr int deepest = 24; // recursion depth; crafted sequences could recurse without end
constexpr std::ptrdiff_t mostDifferences = 256;
constexpr std::ptrdiff_t nowhere = -2; // stays invalid even after a step forward

struct Range {
    std::uint32_t aBegin, aEnd, bBegin, bEnd;

    bool isEmpty() const { return aBegin == aEnd || bBegin == bEnd; }
};

class Matching {
public:
    Matching(const Sequence& a, const Sequence& b)
        : m_a(a)
        , m_b(b)
    {
        std::uint32_t most = 0;
        for (const std::uint32_t element : a)
            most = std::max(most, element);
        for (const std::uint32_t element : b)
            most = std::max(most, element);
        m_seen.resize(std::size_t{most} + 1);
    }

    std::vector<PlacePair> all()
    {
        match({0, static_cast<std::uint32_t>(m_a.size()), 0, static_cast<std::uint32_t>(m_b.size())}, 0);
        return std::move(m_pairs);
    }

private:
    // How often an element occurs in a range of each sequence, and where in the second.
    struct Seen {
        std::uint32_t inA = 0;
        std::uint32_t inB = 0;
        std::uint32_t placeInB = 0;
    };

    void match(Range range, int depth)
    {
        for (; !range.isEmpty() && m_a[range.aBegin] == m_b[range.bBegin]; ++range.aBegin, ++range.bBegin)
            m_pairs.emplace_back(range.aBegin, range.bBegin);
        const std::uint32_t end = range.aEnd;
        for (; !range.isEmpty() && m_a[range.aEnd - 1] == m_b[range.bEnd - 1]; --range.aEnd, --range.bEnd) { }
        if (!range.isEmpty())
            matchInside(range, depth);
        for (std::uint32_t a = range.aEnd, b = range.bEnd; a < end; ++a, ++b)
            m_pairs.emplace_back(a, b);
    }

    void matchInside(const Range& range, int depth)
    {
        const std::vector<PlacePair> anchors
            = depth < deepest ? commonSingles(range) : std::vector<PlacePair>();
        if (anchors.empty()) {
            matchFewDifferences(range);
            return;
        }
        Range between = range;
        for (const auto& [a, b] : anchors) {
            between.aEnd = a;
            between.bEnd = b;
            match(between, depth + 1);
            m_pairs.emplace_back(a, b);
            between.aBegin = a + 1;
            between.bBegin = b + 1;
        }
        between.aEnd = range.aEnd;
        between.bEnd = range.bEnd;
        match(between, depth + 1);
    }

    // Elements that occur once in both, in their longest common order.
    std::vector<PlacePair> commonSingles(const Range& range)
    {
        for (std::uint32_t a = range.aBegin; a < range.aEnd; ++a)
            ++m_seen[m_a[a]].inA;
        for (std::uint32_t b = range.bBegin; b < range.bEnd; ++b) {
            ++m_seen[m_b[b]].inB;
            m_seen[m_b[b]].placeInB = b;
        }
        std::vector<PlacePair> pairs;
        Sequence places;
        for (std::uint32_t a = range.aBegin; a < range.aEnd; ++a) {
            const Seen& seen = m_seen[m_a[a]];
            if (seen.inA == 1 && seen.inB == 1) {
                pairs.emplace_back(a, seen.placeInB);
                places.push_back(seen.placeInB);
            }
        }
        for (std::uint32_t a = range.aBegin; a < range.aEnd; ++a)
            m_seen[m_a[a]] = {};
        for (std::uint32_t b = range.bBegin; b < range.bEnd; ++b)
            m_seen[m_b[b]] = {};
        return inOrder(pairs, places);
    }

    static std::vector<PlacePair> inOrder(const std::vector<PlacePair>& pairs, const Sequence& places)
    {
        const std::vector<bool> isOut = outOfOrder(places);
        std::vector<PlacePair> ordered;
        for (std::size_t i = 0; i < pairs.size(); ++i) {
            if (!isOut[i])
                ordered.push_back(pairs[i]);
        }
        return ordered;
    }

    // Myers: with d differences, the furthest point reached on each diagonal (position in a minus position in
    // b).
    void matchFewDifferences(const Range& range)
    {
        const auto aLength = static_cast<std::ptrdiff_t>(range.aEnd - range.aBegin);
        const auto bLength = static_cast<std::ptrdiff_t>(range.bEnd - range.bBegin);
        std::vector<std::vector<std::ptrdiff_t>>
            reached; // by number of differences: positions in a, by diagonal
        for (std::ptrdiff_t d = 0; d <= std::min(mostDifferences, aLength + bLength); ++d) {
            reached.emplace_back(static_cast<std::size_t>(2 * d + 1));
            for (std::ptrdiff_t diagonal = -d; diagonal <= d; diagonal += 2) {
                std::ptrdiff_t a = d == 0 ? 0 : startOn(reached, d, diagonal);
                while (a < aLength && a - diagonal >= 0 && a - diagonal < bLength
                    && elementsAgree(range, a, a - diagonal))
                    ++a;
                reached.back()[static_cast<std::size_t>(diagonal + d)] = a;
                if (a >= aLength && a - diagonal >= bLength) {
                    takePath(range, reached, aLength, bLength);
                    return;
                }
            }
        }
    }

    bool elementsAgree(const Range& range, std::ptrdiff_t a, std::ptrdiff_t b) const
    {
        return m_a[range.aBegin + static_cast<std::size_t>(a)]
            == m_b[range.bBegin + static_cast<std::size_t>(b)];
    }

    static std::ptrdiff_t reachedOn(
        const std::vector<std::ptrdiff_t>& reached, std::ptrdiff_t d, std::ptrdiff_t diagonal)
    {
        return diagonal < -d || diagonal > d ? nowhere : reached[static_cast<std::size_t>(diagonal + d)];
    }

    // Where diagonal `diagonal` is entered with the d-th difference: by one element of a, or of b.
    static std::ptrdiff_t startOn(
        const std::vector<std::vector<std::ptrdiff_t>>& reached, std::ptrdiff_t d, std::ptrdiff_t diagonal)
    {
        const auto& before = reached[static_cast<std::size_t>(d - 1)];
        return std::max(reachedOn(before, d - 1, diagonal - 1) + 1, reachedOn(before, d - 1, diagonal + 1));
    }

    void takePath(const Range& range, const std::vector<std::vector<std::ptrdiff_t>>& reached,
        std::ptrdiff_t a, std::ptrdiff_t b)
    {
        const std::size_t first = m_pairs.size();
        for (auto d = static_cast<std::ptrdiff_t>(reached.size()) - 1; d >= 0; --d) {
            const std::ptrdiff_t diagonal = a - b;
            const std::ptrdiff_t start = d == 0 ? 0 : startOn(reached, d, diagonal);
            while (a > start) {
                --a;
                --b;
                m_pairs.emplace_back(range.aBegin + a, range.bBegin + b);
            }
            if (d == 0)
                break;
            const bool isFromA
                = start == reachedOn(reached[static_cast<std::size_t>(d - 1)], d - 1, diagonal - 1) + 1;
            (isFromA ? a : b) -= 1;
        }
        std::reverse(m_pairs.begin() + static_cast<std::ptrdiff_t>(first), m_pairs.end());
    }

    const Sequence& m_a;
    const Sequence& m_b;
    std::vector<Seen> m_seen; // by element
    std::vector<PlacePair> m_pairs;
};

} // namespace

std::vector<PlacePair> matchingPlaces(const Sequence& a, const Sequence& b)
{
    return Matching(a, b).all();
}

} // namespace quorvane::rules
