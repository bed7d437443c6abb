#pragma once

#include "codesign/Certificate.h"

#include <array>

namespace quorvane::codesign {

// The one certificate that is trusted by itself, identified by the SHA-256 of its encoding and never by its
// name.
struct TrustAnchor {
    std::array<std::uint8_t, 32> fingerprint;

    bool is(const Certificate& certificate) const
    {
        return certificate.fingerprint().view() == ByteView(fingerprint.data(), fingerprint.size());
    }
};

// The platform vendor's root certificate, valid from 2006 to 2035. Every genuine signature includes it.
TrustAnchor platformRoot();

} // namespace quorvane::codesign
