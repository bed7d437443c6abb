#pragma once

#include "codesign/CodeDirectory.h"
#include "codesign/SignatureContainer.h"

#include <optional>

namespace quorvane::codesign {

// Compares the data that accompanies the code with the special hashes of `directory`: the Info.plist and the
// blobs of the container (requirements, entitlements, launch constraints). The resource seal is checked
// separately.
ValidityStatus verifySpecialSlots(const CodeDirectory& directory, const SignatureContainer& container,
    const std::optional<Bytes>& infoPlist);

// True when `data` has the hash that `directory` stores for the slot.
bool matchesSpecialHash(const CodeDirectory& directory, std::uint32_t slot, ByteView data);

} // namespace quorvane::codesign
