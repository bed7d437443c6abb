#pragma once

#include "codesign/ByteView.h"

#include <optional>

namespace quorvane::codesign {

// Identifier octets of the types that occur in signatures.
namespace berTag {
inline constexpr std::uint8_t integer = 0x02;
inline constexpr std::uint8_t octetString = 0x04;
inline constexpr std::uint8_t objectIdentifier = 0x06;
inline constexpr std::uint8_t generalizedTime = 0x18;
inline constexpr std::uint8_t octetStringInPieces = 0x24;
inline constexpr std::uint8_t sequence = 0x30;
inline constexpr std::uint8_t set = 0x31;
inline constexpr std::uint8_t primitiveContext0 = 0x80;
inline constexpr std::uint8_t context0 = 0xa0;
inline constexpr std::uint8_t context1 = 0xa1;
} // namespace berTag

struct BerElement {
    std::uint8_t tag = 0;
    ByteView content; // without the end mark of an indefinite length
    ByteView whole;
};

// Reads a sequence of ASN.1 elements in the basic encoding rules (BER), indefinite lengths included.
//
// Never recurses; rejects more than 48 nested indefinite lengths, tag numbers above 30 and lengths beyond the
// end of the bytes. A view; the bytes must outlive it. One thread at a time.
class BerReader {
public:
    explicit BerReader(ByteView bytes)
        : m_rest(bytes)
    {
    }

    // True when nothing is left.
    bool atEnd() const { return m_rest.empty(); }

    // The identifier octet of the next element; 0 at the end.
    std::uint8_t nextTag() const { return m_rest.u8(0); }

    // None at the end and for a malformed element; the reader then does not advance.
    std::optional<BerElement> next();

    // The next element if it has `tag`; otherwise none, and the reader does not advance.
    std::optional<BerElement> next(std::uint8_t tag);

private:
    ByteView m_rest;
};

// The bytes of an octet string, primitive or constructed of chunks; none for any other element.
std::optional<Bytes> octets(const BerElement& element);

} // namespace quorvane::codesign
