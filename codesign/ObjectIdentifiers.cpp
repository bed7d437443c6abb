#include "codesign/ObjectIdentifiers.h"

#include <algorithm>
#include <array>

namespace quorvane {

std::optional<HashAlgorithm> hashAlgorithmOf(ByteView objectIdentifier)
{
    const std::string_view text = objectIdentifier.text();
    if (text == std::string_view("\x2b\x0e\x03\x02\x1a"))
        return HashAlgorithm::sha1;
    if (text == std::string_view("\x60\x86\x48\x01\x65\x03\x04\x02\x01"))
        return HashAlgorithm::sha256;
    if (text == std::string_view("\x60\x86\x48\x01\x65\x03\x04\x02\x02"))
        return HashAlgorithm::sha384;
    if (text == std::string_view("\x60\x86\x48\x01\x65\x03\x04\x02\x03"))
        return HashAlgorithm::sha512;
    return std::nullopt;
}

bool isRsaSignature(ByteView objectIdentifier)
{
    // alone, with SHA-1, SHA-256, SHA-384, SHA-512
    constexpr std::string_view lastOctets("\x01\x05\x0b\x0c\x0d", 5);
    constexpr std::string_view family = "\x2a\x86\x48\x86\xf7\x0d\x01\x01";
    const std::string_view text = objectIdentifier.text();
    return text.size() == family.size() + 1 && text.starts_with(family)
        && lastOctets.find(text.back()) != std::string_view::npos;
}

} // namespace quorvane
