#include "codesign/Ber.h"

namespace quorvane::codesign {

namespace {

constexpr int deepestIndefinite = 48;

struct Header {
    std::uint8_t tag = 0;
    std::uint64_t headerSize = 0;
    std::optional<std::uint64_t> length; // none: indefinite, up to an end mark
};

std::optional<Header> readHeader(ByteView bytes)
{
    constexpr std::uint8_t tagNumberBits = 0x1f;
    constexpr std::uint8_t constructedBit = 0x20;
    constexpr std::uint8_t indefinite = 0x80;
    Header header;
    header.tag = bytes.u8(0);
    const std::uint8_t first = bytes.u8(1);
    if (!bytes.holds(0, 2) || (header.tag & tagNumberBits) == tagNumberBits)
        return std::nullopt;
    if (first < indefinite) {
        header.headerSize = 2;
        header.length = first;
        return header;
    }
    const unsigned lengthOctets = first - indefinite;
    if (lengthOctets > sizeof(std::uint64_t) || !bytes.holds(2, lengthOctets))
        return std::nullopt;
    header.headerSize = 2 + lengthOctets;
    if (lengthOctets > 0)
        header.length = bytes.number(2, lengthOctets, ByteOrder::big);
    else if ((header.tag & constructedBit) == 0)
        return std::nullopt;
    return header;
}

bool isEndMark(ByteView bytes)
{
    return bytes.holds(0, 2) && bytes.u8(0) == 0 && bytes.u8(1) == 0;
}

// The length of the contents up to the matching end mark.
std::optional<std::uint64_t> contentLength(ByteView contents)
{
    std::uint64_t at = 0;
    for (int depth = 1; depth <= deepestIndefinite;) {
        const ByteView rest = contents.from(at);
        if (isEndMark(rest)) {
            if (--depth == 0)
                return at;
            at += 2;
            continue;
        }
        const auto header = readHeader(rest);
        if (!header)
            return std::nullopt;
        if (!header->length)
            ++depth;
        else if (!rest.holds(header->headerSize, *header->length))
            return std::nullopt;
        at += header->headerSize + header->length.value_or(0);
    }
    return std::nullopt;
}

} // namespace

std::optional<BerElement> BerReader::next()
{
    const auto header = readHeader(m_rest);
    if (!header)
        return std::nullopt;
    const ByteView rest = m_rest.from(header->headerSize);
    const auto length = header->length ? header->length : contentLength(rest);
    const auto content = length ? rest.part(0, *length) : std::nullopt;
    if (!content)
        return std::nullopt;
    const std::uint64_t end = header->headerSize + *length + (header->length ? 0 : 2);
    const BerElement element{header->tag, *content, *m_rest.part(0, end)};
    m_rest = m_rest.from(end);
    return element;
}

std::optional<BerElement> BerReader::next(std::uint8_t tag)
{
    return nextTag() == tag ? next() : std::nullopt;
}

std::optional<Bytes> octets(const BerElement& element)
{
    if (element.tag == berTag::octetString)
        return Bytes(element.content.begin(), element.content.end());
    if (element.tag != berTag::octetStringInPieces)
        return std::nullopt;
    Bytes joined;
    BerReader pieces(element.content);
    while (!pieces.atEnd()) {
        const auto piece = pieces.next(berTag::octetString);
        if (!piece)
            return std::nullopt;
        joined.insert(joined.end(), piece->content.begin(), piece->content.end());
    }
    return joined;
}

} // namespace quorvane::codesign
