#pragma once

#include "codesign/ValidityStatus.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::codesign {

// Results of a platform's trust evaluation of a single certificate.
namespace trustResult {
inline constexpr std::uint32_t invalid = 0;
inline constexpr std::uint32_t proceed = 1;
inline constexpr std::uint32_t deny = 3;
inline constexpr std::uint32_t unspecified = 4; // trusted, without an explicit user setting
inline constexpr std::uint32_t recoverableFailure = 5;
} // namespace trustResult

// The values of a certificate: fields by key, each a list of labelled texts. A field may have no list.
struct CertificateItem {
    std::string label;
    std::string value;
};
using CertificateField = std::optional<std::vector<CertificateItem>>;
using CertificateValues = std::map<std::string, CertificateField, std::less<>>;

// Keys and labels of certificate values.
inline constexpr const char* kSecOIDX509V1SubjectName = "subject";
inline constexpr const char* kSecOIDCommonName = "2.5.4.3";

struct CertificateFacts {
    CertificateValues values;
    std::optional<std::string> longDescription;
    std::uint32_t trust = trustResult::invalid; // of this certificate alone
};

// The contents of a code signature. All texts are UTF-8. A value object.
struct SigningInformation {
    std::optional<std::string> identifier;
    std::optional<std::string> teamIdentifier;
    std::optional<std::int32_t> platformIdentifier; // not 0 for a part of the operating system
    std::vector<CertificateFacts> certificates; // the signer's first; empty when the signer is not proven
};

// The signature of one program, a file or a running process.
//
// Operations do not throw. An object belongs to one thread; different objects may be used by different
// threads.
class CodeObject {
public:
    CodeObject() = default;
    CodeObject(const CodeObject&) = delete;
    CodeObject& operator=(const CodeObject&) = delete;
    virtual ~CodeObject() = default;

    // Performs the checks that the flag word selects; returns the first failure.
    virtual ValidityStatus checkValidity(std::uint32_t flags) const = 0;

    // Also for code that is not valid, as far as its signature can be read.
    virtual SigningInformation signingInformation() const = 0;
};

} // namespace quorvane::codesign
