#include "rules/NullableText.h"

#include <cstring>
#include <new>

namespace quorvane::rules {

NullableText::NullableText(std::string_view text)
{
    static Block empty;
    if (text.empty()) {
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
