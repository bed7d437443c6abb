#include "codesign/ObjectIdentifiers.h"

#include <algorithm>
#include <array>

namespace quorvane::codesign {

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

std::optional<KeyKind> keyKindOf(ByteView objectIdentifier)
{
    // without a hash, with SHA-1, SHA-256, SHA-384, SHA-512
    constexpr std::array<std::string_view, 5> rsa{"\x2a\x86\x48\x86\xf7\x0d\x01\x01\x01",
        "\x2a\x86\x48\x86\xf7\x0d\x01\x01\x05", "\x2a\x86\x48\x86\xf7\x0d\x01\x01\x0b",
        "\x2a\x86\x48\x86\xf7\x0d\x01\x01\x0c", "\x2a\x86\x48\x86\xf7\x0d\x01\x01\x0d"};
    constexpr std::array<std::string_view, 5> ellipticCurve{"\x2a\x86\x48\xce\x3d\x02\x01",
        "\x2a\x86\x48\xce\x3d\x04\x01", "\x2a\x86\x48\xce\x3d\x04\x03\x02",
        "\x2a\x86\x48\xce\x3d\x04\x03\x03", "\x2a\x86\x48\xce\x3d\x04\x03\x04"};
    const std::string_view text = objectIdentifier.text();
    if (std::find(rsa.begin(), rsa.end(), text) != rsa.end())
        return KeyKind::rsa;
    if (std::find(ellipticCurve.begin(), ellipticCurve.end(), text) != ellipticCurve.end())
        return KeyKind::ellipticCurve;
    return std::nullopt;
}

} // namespace quorvane::codesign
