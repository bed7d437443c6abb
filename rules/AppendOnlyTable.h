#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace quorvane::rules {

// A sequence that only grows. A copy shares all elements and is cheap; it keeps its length, must not be
// appended to, and may be read on another thread while the original grows.
template <class Element> class AppendOnlyTable {
public:
    std::size_t size() const { return m_size; }

    // Requires number < size().
    const Element& operator[](std::size_t number) const
    {
        // data() does not read the chunk's end pointer, which changes when the original grows on another
        // thread.
        return m_chunks[number / chunkSize]->data()[number % chunkSize];
    }

    // True when one is a copy of the other or of an earlier state of it: then elements of equal number are
    // the same.
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
    static constexpr std::size_t chunkSize = 1024; // copying a million elements copies a thousand pointers
    // Capacity is reserved in full, so that elements never move. They are not constructed in advance: with
    // many small files, each with a table, that would take a third of the time.
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
