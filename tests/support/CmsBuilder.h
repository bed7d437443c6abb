#pragma once

#include "tests/support/TestCertificates.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::test {

// One encoded element.
codesign::Bytes element(std::uint8_t tag, codesign::ByteView contents);
codesign::Bytes elementOf(std::uint8_t tag, const std::vector<codesign::Bytes>& parts);
codesign::Bytes objectIdentifier(const std::string& dots);

// As a property list writes data.
std::string base64(codesign::ByteView bytes);

// A signed or unsigned attribute of a CMS message.
codesign::Bytes attribute(const std::string& identifier, const std::vector<codesign::Bytes>& values);

// A time stamp token to be made.
struct StampPlan {
    Identity stamper;
    std::vector<Identity> certificates;
    std::string time = "20230601120000Z";
    std::optional<codesign::Bytes> imprinted; // instead of the signature
    std::string contentType = "1.2.840.113549.1.9.16.1.4";
    // Changes the parts of the record, each a complete element, before it is signed.
    std::function<void(std::vector<codesign::Bytes>& parts)> alterRecord{};
    // Changes the finished token.
    std::function<void(codesign::Bytes& token)> alterToken{};
};

// A CMS message over CodeDirectories to be made.
struct CmsPlan {
    Identity signer = testAuthority().signer;
    std::vector<Identity> certificates{
        testAuthority().intermediate, testAuthority().root, testAuthority().signer};
    codesign::Bytes signerKeyIdentifier; // identifies the signer; empty: by issuer and serial number
    bool listAsPropertyList = true;
    bool listAsSet = true;
    bool setUnsorted = false;
    bool indefiniteLengths = true;
    bool signedAttributes = true;
    const char* hash = "SHA256";
    std::optional<StampPlan> stamp;
    // Changes the attributes, each a complete element, before they are signed.
    std::function<void(std::vector<codesign::Bytes>& attributes)> alter;
};

codesign::Bytes makeCms(const CmsPlan& plan, const std::vector<codesign::Bytes>& directories);

} // namespace quorvane::test
