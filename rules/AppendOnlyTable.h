#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace quorvane::rules {

// A sequence that only grows. A copy shares all elements and costs next to nothing; it keeps the length it
// was made with, is never appended to, and may be read on another thread while the original grows.
template <class Element> class AppendOnlyTable {
public:
    std::size_t size() const { return m_size; }

    // Requires number < size().
    const Element& operator[](std::size_t number) const
    {
        // By data(), which does not read where the chunk ends: that moves when the original grows.
        return m_chunks[number / chunkSize]->data()[number % chunkSize];
    }

    // True when one is a copy of the other, or of what the other was: elements of one number are the same
    // then.
    bool sharesElementsWith(const AppendOnlyTable& other) const
    {
        return !m_chunks.empty() && !other.m_chunks.empty() && m_chunks.front() == other.m_chunks.front();
    }

    // Makes room for one more, so that the next append() does not throw.
    void makeRoom()
    {
        if (m_size == m_chunks.size() * chunkSize)
            m_chunks.push_back(newChunk());
    }

    void append(Element element)
    {
        makeRoom();
        m_chunks[m_size / chunkSize]->push_back(std::move(element));
        ++m_size;
    }

private:
    static constexpr std::size_t chunkSize = 1024; // a million elements are a thousand counts to copy
    // With room for all of its elements, which so never move. Only those that are there are made and
    // destroyed: of many small files, each with a table, that is a third of the time.
    using Chunk = std::vector<Element>;

    static std::shared_ptr<Chunk> newChunk()
    {
        auto chunk = std::make_shared<Chunk>();
        chunk->reserve(chunkSize);
        return chunk;
    }

    std::vector<std::shared_ptr<Chunk>> m_chunks;
    std::size_t m_size = 0;
};

} // namespace quorvane::rules
