#pragma once

#include <cstdint>

namespace quorvane::codesign {

// The result of a validity check: 0 or one of the platform's error numbers.
using ValidityStatus = std::int32_t;

namespace status {
inline constexpr ValidityStatus valid = 0;
inline constexpr ValidityStatus unsignedCode = -67062;
inline constexpr ValidityStatus signatureFailed = -67061;
inline constexpr ValidityStatus notVerifiable = -67060;
inline constexpr ValidityStatus unsupported = -67059;
inline constexpr ValidityStatus badResource = -67054;
inline constexpr ValidityStatus signatureInvalid = -67045;
inline constexpr ValidityStatus infoPlistFailed = -67030;
inline constexpr ValidityStatus badStructure = -67010;
inline constexpr ValidityStatus unknownHashes = -67000;
inline constexpr ValidityStatus timeStampBroken = -67896;
inline constexpr ValidityStatus timeStampNotTrusted = -67894;
inline constexpr ValidityStatus cmsUnreadable = -25257;
inline constexpr ValidityStatus notTrusted = -2147409622;
inline constexpr ValidityStatus expired = -2147409654;
inline constexpr ValidityStatus unreadable = -2147416000; // the file contains no readable code
} // namespace status

// Bits of the flag word that selects the checks; any other bit selects nothing.
namespace validityFlag {
inline constexpr std::uint32_t skipPages = 0x2;
inline constexpr std::uint32_t skipResources = 0x4;
inline constexpr std::uint32_t strict = 0x10;
inline constexpr std::uint32_t revocation = 0x40000000;
} // namespace validityFlag

} // namespace quorvane::codesign
