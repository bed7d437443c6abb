#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace quorvane {

// A sequence that only grows. A copy shares all elements and costs next to nothing; it keeps the length it
// was made with, and may be read on another thread while the original grows.
template <class Element> class AppendOnlyTable {
public:
    std::size_t size() const { return m_size; }

    // Requires number < size().
    const Element& operator[](std::size_t number) const
    {
        return (*m_chunks[number / chunkSize])[number % chunkSize];
    }

    // Makes room for one more, so that the next append() does not throw.
    void makeRoom()
    {
        if (m_size == m_chunks.size() * chunkSize)
            m_chunks.push_back(std::make_shared<Chunk>());
    }

    void append(Element element)
    {
        makeRoom();
        (*m_chunks[m_size / chunkSize])[m_size % chunkSize] = std::move(element);
        ++m_size;
    }

private:
    static constexpr std::size_t chunkSize = 1024; // a million elements are a thousand counts to copy
    using Chunk = std::array<Element, chunkSize>;

    std::vector<std::shared_ptr<Chunk>> m_chunks;
    std::size_t m_size = 0;
};

} // namespace quorvane
