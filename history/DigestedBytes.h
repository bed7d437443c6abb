#pragma once

#include "history/ContentDigest.h"

#include <concepts>
#include <string>
#include <string_view>

namespace quorvane::history {

// Bytes that another object owns, which must outlive this, with their digest. Digesting a large file takes as
// long as reading it, so it is done once, here. Immutable; any thread.
class DigestedBytes {
public:
    DigestedBytes()
        : DigestedBytes(std::string_view())
    {
    }
    template <std::convertible_to<std::string_view> Text>
    DigestedBytes(const Text& bytes)
        : m_bytes(bytes)
        , m_digest(contentDigest(m_bytes))
    {
    }

    std::string_view bytes() const { return m_bytes; }
    // As by contentDigest().
    const std::string& digest() const { return m_digest; }

private:
    std::string_view m_bytes;
    std::string m_digest;
};

} // namespace quorvane::history
