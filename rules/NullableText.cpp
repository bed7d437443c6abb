#include "rules/NullableText.h"

#include <cstring>
#include <new>

namespace quorvane::rules {

NullableText::NullableText(std::string_view text)
{
    // Tags and constraints are mostly empty: all empty texts share one block, whose first reference is never
    // released.
    static Block empty;
    if (text.empty()) {
        empty.owners.fetch_add(1, std::memory_order_relaxed);
        m_block = &empty;
        return;
    }
    void* memory = ::operator new(sizeof(Block) + text.size());
    m_block = new (memory) Block;
    m_block->length = static_cast<std::uint32_t>(text.size());
    std::memcpy(static_cast<char*>(memory) + sizeof(Block), text.data(), text.size());
}

void NullableText::release(Block* block) noexcept
{
    block->~Block();
    ::operator delete(block);
}

} // namespace quorvane::rules
