#pragma once

#include "rules/NullableText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quorvane::rules {

// Texts by number, folded for search once and stored contiguously, so that a search is one scan of memory.
// Any thread, one at a time.
class FoldedColumn {
public:
    // Reserves memory.
    void reserve(std::size_t texts, std::size_t bytes);

    // Adds the next text.
    void append(std::string_view text);

    // Sets the mark of every text from number `first` on that contains `key`, which must be a non-empty
    // searchKey(). Texts beyond the last mark are not looked at.
    void markContaining(std::string_view key, std::size_t first, std::vector<bool>& marks) const;

private:
    std::string m_keys; // each followed by a byte that no UTF-8 text holds
    std::vector<std::size_t> m_starts; // of the texts, in m_keys
};

// The same for texts that rules have in common, in any order: those that share their bytes are folded and
// searched once. Program and tag of a rule take 8 bytes instead of about 94.
class RepeatedColumn {
public:
    void append(const NullableText& text);
    void markContaining(std::string_view key, std::size_t first, std::vector<bool>& marks) const;

private:
    FoldedColumn m_distinct;
    std::vector<NullableText> m_texts; // the distinct ones, whose addresses thus stay theirs
    std::unordered_map<const void*, std::uint32_t> m_known; // by address: the number of the distinct text
    std::vector<std::uint32_t> m_textOf; // by number: that of the distinct text
};

} // namespace quorvane::rules
