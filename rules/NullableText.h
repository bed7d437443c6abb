#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quorvane::rules {

// UTF-8 text that may be null, which is not the same as empty.
//
// The bytes are immutable and shared by all copies: a copy costs one reference count and no memory, so that a
// million rules of one program hold its path once. Copies may be used on different threads; a single object
// may not.
class NullableText {
public:
    NullableText() = default;
    NullableText(std::nullopt_t) { }
    NullableText(std::string_view text);
    NullableText(const std::string& text)
        : NullableText(std::string_view(text))
    {
    }
    NullableText(const char* text)
        : NullableText(std::string_view(text))
    {
    }
    NullableText(const NullableText& other) noexcept
        : m_block(other.m_block)
    {
        if (isCounted())
            m_block->owners.fetch_add(1, std::memory_order_relaxed);
    }
    NullableText(NullableText&& other) noexcept
        : m_block(other.m_block)
    {
        other.m_block = nullptr;
    }
    NullableText& operator=(NullableText other) noexcept
    {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~NullableText()
    {
        if (isCounted() && m_block->owners.fetch_sub(1, std::memory_order_acq_rel) == 1)
            release(m_block);
    }

    bool isNull() const { return m_block == nullptr; }

    // The text; empty when null. The view is valid as long as any copy of this object.
    std::string_view view() const
    {
        if (m_block == nullptr)
            return {};
        return {reinterpret_cast<const char*>(m_block + 1), m_block->length};
    }

    // The text as files, keys and log lines show it: null is "(null)".
    std::string_view written() const { return isNull() ? "(null)" : view(); }

    // True for two copies of one object, and for equal texts that share their bytes. Never true for null.
    bool sharesBytesWith(const NullableText& other) const { return !isNull() && m_block == other.m_block; }

    // The address of the shared bytes: the same for all copies while one of them lives. Null when the text is
    // null.
    const void* sharedBytes() const { return m_block; }

private:
    // The bytes follow the block in the same allocation.
    struct Block {
        std::atomic<std::uint32_t> owners{1};
        std::uint32_t length = 0;
    };
    // All empty texts share one block, which is never released. Counting its owners would be wasted, and make
    // threads that read rules wait for each other: most tags and constraints are empty.
    bool isCounted() const { return m_block != nullptr && m_block->length > 0; }
    static void release(Block* block) noexcept;

    Block* m_block = nullptr;
};

// Equality as the rules compare: exact, and a null receiver equals nothing, not even another null.
// There is no operator== for that reason.
inline bool equalNonNull(const NullableText& receiver, const NullableText& other)
{
    if (receiver.isNull() || other.isNull())
        return false;
    return receiver.sharesBytesWith(other) || receiver.view() == other.view();
}

} // namespace quorvane::rules
