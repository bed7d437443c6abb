#pragma once

#include "codesign/CodeObject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane::codesign {

// Signature states; there is no 0.
namespace signatureState {
inline constexpr std::int32_t unsignedCode = 1;
inline constexpr std::int32_t valid = 2;
inline constexpr std::int32_t failed = 3;
inline constexpr std::int32_t notVerifiable = 4;
inline constexpr std::int32_t unsupported = 5;
inline constexpr std::int32_t cannotTell = 6;
} // namespace signatureState

// The flag words of the usual queries.
inline constexpr std::uint32_t basicFlags = validityFlag::skipPages | validityFlag::skipResources;
inline constexpr std::uint32_t strictFlags
    = validityFlag::revocation | validityFlag::strict | validityFlag::skipResources;
inline constexpr std::uint32_t dynamicFlags = validityFlag::revocation;

// Keys of signing information.
inline constexpr std::string_view kSecCodeInfoIdentifier = "identifier";
inline constexpr std::string_view kSecCodeInfoTeamIdentifier = "teamid";
inline constexpr std::string_view kSecCodeInfoCertificates = "certificates";
inline constexpr std::string_view platformIdentifierKey = "platform-identifier";

using SigningProperty = std::variant<std::string, std::int32_t, std::vector<CertificateFacts>>;

// Queries about an existing code object. Null means that it could not be created: its state is 6, its
// properties are none, its platform identifier is 0. Any thread that may use the object.

std::int32_t codeSignState(const CodeObject* code, std::uint32_t flags);

// None for a key that is missing or not known, and for the text "(null)".
std::optional<SigningProperty> codeSignProperty(const CodeObject* code, std::string_view key);
std::optional<std::string> codeSignText(const CodeObject* code, std::string_view key);
std::int32_t codeSignPlatformIdentifier(const CodeObject* code);

// "Software Signing", the long description of the signer's certificate, or "Self-Signed Certificate" for
// everything that is not trusted.
std::string codeSignCertInfo(const CodeObject* code);

// True when the signer's chain ends in the platform vendor's root.
bool isSignedUnderPlatformRoot(const CodeObject* code);

// The value of the first item of the field with that label; none when any of them is missing.
std::optional<std::string> getCertificateStringContent(
    const CertificateValues& values, std::string_view fieldKey, std::string_view label);

// 1 when the certificate is trusted on its own, else 0.
std::int32_t evaluateCertificateTrust(const CertificateFacts& certificate);

} // namespace quorvane::codesign
