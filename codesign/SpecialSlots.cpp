#include "codesign/SpecialSlots.h"

namespace quorvane::codesign {

bool matchesSpecialHash(const CodeDirectory& directory, std::uint32_t slot, ByteView data)
{
    const auto stored = directory.specialHash(slot);
    const auto algorithm = directory.hashAlgorithm();
    return stored && algorithm && hashOf(*algorithm, data).startsWith(*stored);
}

ValidityStatus verifySpecialSlots(const CodeDirectory& directory, const SignatureContainer& container,
    const std::optional<Bytes>& infoPlist)
{
    // Blobs that do not overlap cannot exceed the container; hashing one of them repeatedly would.
    std::uint64_t left = container.size();
    for (std::uint32_t slot = directory.specialSlotCount(); slot > 0; --slot) {
        if (slot == signatureSlot::resourceSeal || !directory.specialHash(slot))
            continue;
        if (slot == signatureSlot::infoPlist) {
            if (!infoPlist || !matchesSpecialHash(directory, slot, *infoPlist))
                return status::infoPlistFailed;
            continue;
        }
        const auto blob = container.blob(slot);
        if (!blob || blob->size() > left || !matchesSpecialHash(directory, slot, *blob))
            return status::signatureFailed;
        left -= blob->size();
    }
    return status::valid;
}

} // namespace quorvane::codesign
