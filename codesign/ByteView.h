#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane::codesign {

using Bytes = std::vector<std::uint8_t>;

enum class ByteOrder { little, big };

// A bounds-checked view of bytes from a foreign file, which must outlive it.
//
// Offsets and lengths are 64 bits wide and may be any value. A number that is not completely inside reads as
// 0: check holds() first where that matters. A value object; any thread.
class ByteView {
public:
    ByteView() = default;
    ByteView(const void* data, std::size_t size)
        : m_data(static_cast<const std::uint8_t*>(data))
        , m_size(size)
    {
    }
    ByteView(const Bytes& bytes) // NOLINT: a vector is a view of itself
        : ByteView(bytes.data(), bytes.size())
    {
    }

    const std::uint8_t* data() const { return m_data; }
    std::size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    const std::uint8_t* begin() const { return m_data; }
    const std::uint8_t* end() const { return m_data + m_size; }
    std::string_view text() const { return {reinterpret_cast<const char*>(m_data), m_size}; }

    bool holds(std::uint64_t offset, std::uint64_t length) const
    {
        return offset <= m_size && length <= m_size - offset;
    }

    // None when the part is not completely inside.
    std::optional<ByteView> part(std::uint64_t offset, std::uint64_t length) const
    {
        if (!holds(offset, length))
            return std::nullopt;
        return ByteView(m_data + offset, static_cast<std::size_t>(length));
    }

    // The bytes from `offset` to the end; empty when there are none.
    ByteView from(std::uint64_t offset) const
    {
        return offset < m_size ? ByteView(m_data + offset, m_size - static_cast<std::size_t>(offset))
                               : ByteView();
    }

    std::uint8_t u8(std::uint64_t offset) const
    {
        return static_cast<std::uint8_t>(number(offset, 1, ByteOrder::big));
    }
    std::uint32_t u32(std::uint64_t offset, ByteOrder order = ByteOrder::big) const
    {
        return static_cast<std::uint32_t>(number(offset, 4, order));
    }
    std::uint64_t u64(std::uint64_t offset, ByteOrder order = ByteOrder::big) const
    {
        return number(offset, 8, order);
    }

    // An unsigned number of up to 8 bytes.
    std::uint64_t number(std::uint64_t offset, unsigned length, ByteOrder order) const
    {
        if (!holds(offset, length))
            return 0;
        std::uint64_t value = 0;
        for (unsigned i = 0; i < length; ++i)
            value = value << 8U | m_data[offset + (order == ByteOrder::big ? i : length - 1 - i)];
        return value;
    }

    // The text at `offset` without its terminating zero byte; none when no zero byte follows inside.
    std::optional<std::string_view> zeroTerminated(std::uint64_t offset) const
    {
        const std::string_view rest = from(offset).text();
        const std::size_t end = rest.find('\0');
        return end == std::string_view::npos ? std::nullopt : std::optional(rest.substr(0, end));
    }

    friend bool operator==(ByteView left, ByteView right) { return left.text() == right.text(); }
    friend bool operator<(ByteView left, ByteView right) { return left.text() < right.text(); }

private:
    const std::uint8_t* m_data = nullptr;
    std::size_t m_size = 0;
};

} // namespace quorvane::codesign
