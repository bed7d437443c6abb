#pragma once

#include "codesign/ByteView.h"
#include "codesign/Certificate.h"
#include "codesign/Hasher.h"

#include <optional>
#include <string_view>

namespace quorvane::codesign {

// Object identifiers, as the content octets of their encoding.
namespace oid {
inline constexpr std::string_view data = "\x2a\x86\x48\x86\xf7\x0d\x01\x07\x01";
inline constexpr std::string_view signedData = "\x2a\x86\x48\x86\xf7\x0d\x01\x07\x02";
inline constexpr std::string_view messageDigest = "\x2a\x86\x48\x86\xf7\x0d\x01\x09\x04";
inline constexpr std::string_view timeStampToken = "\x2a\x86\x48\x86\xf7\x0d\x01\x09\x10\x02\x0e";
inline constexpr std::string_view timeStampInfo = "\x2a\x86\x48\x86\xf7\x0d\x01\x09\x10\x01\x04";

// The two forms in which a code signature lists the hashes of its CodeDirectories.
inline constexpr std::string_view hashListPlist = "\x2a\x86\x48\x86\xf7\x63\x64\x09\x01";
inline constexpr std::string_view hashListSet = "\x2a\x86\x48\x86\xf7\x63\x64\x09\x02";
} // namespace oid

// None for a hash that signatures do not use.
std::optional<HashAlgorithm> hashAlgorithmOf(ByteView objectIdentifier);

// The kind of key of a signature algorithm, with or without a hash; none for a kind that is not supported.
std::optional<KeyKind> keyKindOf(ByteView objectIdentifier);

} // namespace quorvane::codesign
