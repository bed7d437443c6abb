#include "codesign/SignatureContainer.h"

#include <algorithm>
#include <utility>

namespace quorvane::codesign {

namespace {

constexpr std::uint32_t containerMagic = 0xfade0cc0;
constexpr std::uint64_t headerSize = 12;
constexpr std::uint64_t indexEntrySize = 8;

// A container takes about a hundredth of its program and has a dozen blobs.
constexpr std::uint64_t largestContainer = 32U << 20U;
constexpr std::uint32_t mostBlobs = 1024;

} // namespace

std::optional<SignatureContainer> SignatureContainer::read(
    const CodeFile& file, std::uint64_t offset, std::uint64_t room)
{
    const auto header = file.bytes(offset, headerSize, headerSize);
    const std::uint32_t length = header ? ByteView(*header).u32(4) : 0;
    if (!header || ByteView(*header).u32(0) != containerMagic || length > room)
        return std::nullopt;
    auto bytes = file.bytes(offset, length, largestContainer);
    return bytes ? parse(std::move(*bytes)) : std::nullopt;
}

std::optional<SignatureContainer> SignatureContainer::parse(Bytes bytes)
{
    const ByteView all(bytes);
    const std::uint32_t length = all.u32(4);
    const std::uint32_t count = all.u32(8);
    const std::uint64_t indexEnd = headerSize + count * indexEntrySize;
    if (all.u32(0) != containerMagic || count > mostBlobs || indexEnd > length || length > all.size())
        return std::nullopt;
    SignatureContainer container;
    for (std::uint64_t at = headerSize; at < indexEnd; at += indexEntrySize) {
        const std::uint32_t offset = all.u32(at + 4);
        if (offset == 0)
            continue;
        if (offset < indexEnd || offset + blobHeaderSize > length)
            return std::nullopt;
        const std::uint32_t blobLength = all.u32(offset + 4ULL);
        if (blobLength < blobHeaderSize || blobLength > length - offset)
            return std::nullopt;
        container.m_entries.push_back({all.u32(at), offset, blobLength});
    }
    container.m_bytes = std::move(bytes);
    return container;
}

std::optional<ByteView> SignatureContainer::blob(std::uint32_t slot) const
{
    const auto found = std::find_if(
        m_entries.begin(), m_entries.end(), [slot](const Entry& entry) { return entry.slot == slot; });
    if (found == m_entries.end())
        return std::nullopt;
    return ByteView(m_bytes).part(found->offset, found->length);
}

} // namespace quorvane::codesign
