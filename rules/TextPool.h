#pragma once

#include "rules/Hashing.h"
#include "rules/NullableText.h"

#include <bit>
#include <cstddef>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// Lets repeated texts share their bytes. Remembers a bounded number of recent texts. One thread at a time.
class TextPool {
public:
    // `size`: how many, rounded up to a power of two. Texts of a file repeat less often than their number
    // suggests when they compete for few places, so it should be several times that of the distinct texts.
    explicit TextPool(std::size_t size = 1U << 14U)
        : m_kept(std::bit_ceil(size))
    {
    }

    NullableText text(std::string_view wanted)
    {
        if (wanted.empty())
            return wanted;
        NullableText& kept = m_kept[TextHash()(wanted) & (m_kept.size() - 1)];
        if (kept.isNull() || kept.view() != wanted)
            kept = NullableText(wanted);
        return kept;
    }

private:
    std::vector<NullableText> m_kept;
};

} // namespace quorvane::rules
