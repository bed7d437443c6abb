#pragma once

#include "rules/NullableText.h"

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// Lets repeated texts share their bytes. Remembers a bounded number of recent texts. One thread at a time.
class TextPool {
public:
    explicit TextPool(std::size_t size = 1U << 14U)
        : m_kept(size)
    {
    }

    NullableText text(std::string_view wanted)
    {
        NullableText& kept = m_kept[std::hash<std::string_view>{}(wanted) % m_kept.size()];
        if (kept.isNull() || kept.view() != wanted)
            kept = NullableText(wanted);
        return kept;
    }

private:
    std::vector<NullableText> m_kept;
};

} // namespace quorvane::rules
