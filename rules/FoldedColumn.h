#pragma once

#include "rules/NullableText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::rules {

// One text of every rule by number, folded for search once and stored contiguously, so that a search is one
// scan of memory. Adjacent rules with the same text share it. For the thread that owns the store.
class FoldedColumn {
public:
    // Reserves memory.
    void reserve(std::size_t rules, std::size_t bytes);

    // Adds the text of the next rule.
    void append(const NullableText& text);

    // Sets the mark of every rule from number `first` on whose text contains `key`, which must be a non-empty
    // searchKey().
    void markContaining(std::string_view key, std::size_t first, std::vector<bool>& marks) const;

private:
    struct Text {
        std::size_t start; // in m_keys
        std::uint32_t firstRule;
    };
    std::string m_keys; // each followed by a byte that no UTF-8 text holds
    std::vector<Text> m_texts;
    NullableText m_last; // unfolded
    std::uint32_t m_rules = 0;
};

} // namespace quorvane::rules
