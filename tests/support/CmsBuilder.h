#pragma once

#include "tests/support/TestCertificates.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::test {

// One encoded element.
Bytes element(std::uint8_t tag, ByteView contents);
Bytes elementOf(std::uint8_t tag, const std::vector<Bytes>& parts);
Bytes objectIdentifier(const std::string& dots);

// A signed or unsigned attribute of a CMS message.
Bytes attribute(const std::string& identifier, const std::vector<Bytes>& values);

// A time stamp token to be made.
struct StampPlan {
    Identity stamper;
    std::vector<Identity> certificates;
    std::string time = "20230601120000Z";
    std::optional<Bytes> imprinted; // something else than the signature
};

// A CMS message over CodeDirectories to be made.
struct CmsPlan {
    Identity signer = testAuthority().signer;
    std::vector<Identity> certificates{
        testAuthority().intermediate, testAuthority().root, testAuthority().signer};
    Bytes signerKeyIdentifier; // by which the signer is named; empty: by issuer and serial number
    bool listAsPropertyList = true;
    bool listAsSet = true;
    bool setUnsorted = false;
    bool indefiniteLengths = true;
    bool signedAttributes = true;
    const char* hash = "SHA256";
    std::optional<StampPlan> stamp;
    // Changes the attributes, each a whole element, before they are signed.
    std::function<void(std::vector<Bytes>& attributes)> alter;
};

Bytes makeCms(const CmsPlan& plan, const std::vector<Bytes>& directories);

} // namespace quorvane::test
