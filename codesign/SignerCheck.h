#pragma once

#include "codesign/Certificate.h"
#include "codesign/CodeDirectories.h"
#include "codesign/TrustAnchor.h"

#include <vector>

namespace quorvane::codesign {

struct SignerVerdict {
    ValidityStatus status = status::cmsUnreadable;
    std::vector<Certificate> chain; // the signer's first; empty unless the status is valid
};

// Checks the CMS signature of a program that is not signed ad hoc: the signature, the lists of hashes, the
// time stamp and the certificates. `cms` is the signature without its blob header.
//
// Accepts any self-signed root: trust is decided elsewhere. An expired certificate fails only at a stamped
// time or when the program demands it. No network is used, so revocation is never detected.
SignerVerdict checkCodeSigner(ByteView cms, const CodeDirectories& directories, const TrustAnchor& anchor);

} // namespace quorvane::codesign
