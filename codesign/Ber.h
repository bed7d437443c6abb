#pragma once

#include "codesign/ByteView.h"

#include <optional>

namespace quorvane::codesign {

// Identifier octets of the encodings that occur in signatures.
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

// Reads one ASN.1 element after another in the basic encoding rules, indefinite lengths included.
//
// Never recurses; refuses more than 48 indefinite lengths within each other, tag numbers above 30 and lengths
// that the bytes do not hold. A view; the bytes must outlive it.
class BerReader {
public:
    explicit BerReader(ByteView bytes)
        : m_rest(bytes)
    {
    }

    // True when nothing is left.
    bool atEnd() const { return m_rest.empty(); }

    // The identifier octet of what comes next; 0 at the end.
    std::uint8_t nextTag() const { return m_rest.u8(0); }

    // None at the end and for what cannot be read; the reader then stays where it is.
    std::optional<BerElement> next();

    // The next element when it bears `tag`; none otherwise, and then nothing is taken.
    std::optional<BerElement> next(std::uint8_t tag);

private:
    ByteView m_rest;
};

// The bytes of an octet string in one piece or in several; none for any other element.
std::optional<Bytes> octets(const BerElement& element);

} // namespace quorvane::codesign
