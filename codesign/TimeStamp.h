#pragma once

#include "codesign/CmsMessage.h"
#include "codesign/TrustAnchor.h"
#include "codesign/ValidityStatus.h"

#include <ctime>
#include <optional>
#include <vector>

namespace quorvane::codesign {

struct TimeStamp {
    ValidityStatus status = status::timeStampBroken;
    std::time_t time = 0; // when the signature existed; meaningful only when the status is valid
};

// Checks the time stamp token of a signer; none without a token. The token must refer to this signature and
// come from a time stamp authority below the anchor whose certificates were valid at that time.
// `certificates`, those of the signature, complement the token's own.
std::optional<TimeStamp> checkTimeStamp(
    const CmsSigner& signer, const std::vector<Certificate>& certificates, const TrustAnchor& anchor);

} // namespace quorvane::codesign
