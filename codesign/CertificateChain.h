#pragma once

#include "codesign/Certificate.h"

#include <ctime>
#include <vector>

namespace quorvane::codesign {

// A signer's certificate and its issuers, each found by name and verified by its key.
struct CertificateChain {
    std::vector<Certificate> certificates; // the signer's first
    bool endsSelfSigned = false;

    // True when every certificate between the signer's and the last may issue others.
    bool issuersAreAuthorities() const;
    bool isValidAt(std::time_t time) const;
};

// Builds the chain from the given certificates, whatever their order. Uses none twice and stops after ten, or
// after two hundred failed signature checks. Certificates outside the chain have no influence.
CertificateChain buildChain(const Certificate& leaf, const std::vector<Certificate>& others);

} // namespace quorvane::codesign
