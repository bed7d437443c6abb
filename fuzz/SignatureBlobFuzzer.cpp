#include "codesign/CmsMessage.h"
#include "codesign/CodeDirectories.h"
#include "codesign/HashLists.h"
#include "codesign/SignatureContainer.h"
#include "codesign/SignedMessage.h"
#include "codesign/SignerCheck.h"
#include "codesign/SpecialSlots.h"
#include "codesign/TimeStamp.h"
#include "codesign/TrustAnchor.h"

#include <cstdint>
#include <cstdlib>

namespace {

using namespace quorvane;

// Reaches the code behind the signature check without forging a signature.
void lookBehindTheSignature(codesign::ByteView cms, const codesign::CodeDirectories& directories)
{
    const auto message = parseCms(cms);
    if (!message || !message->signer)
        return;
    hashListsMatch(*message->signer, directories);
    checkTimeStamp(*message->signer, certificatesOf(*message), codesign::platformRoot());
}

void lookAtDirectory(const codesign::CodeDirectory& directory)
{
    for (std::uint32_t page = 0; page < directory.pageCount() && page < 64; ++page)
        directory.pageHash(page);
    for (std::uint32_t slot = 0; slot < 64; ++slot)
        directory.specialHash(slot);
    if (directory.pageSize() == 0U)
        std::abort();
}

} // namespace

// Any bytes as a signature. Besides not crashing, no signature may pass with the platform's certificates,
// since the corpus has no genuine one.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto container = codesign::SignatureContainer::parse(codesign::Bytes(data, data + size));
    if (!container)
        return 0;
    const codesign::CodeDirectories directories = loadCodeDirectories(*container);
    if (directories.status != codesign::status::valid)
        return 0;
    for (const codesign::CodeDirectory& directory : directories.all)
        lookAtDirectory(directory);
    verifySpecialSlots(directories.strongest(), *container, std::nullopt);
    if (const auto blob = container->blob(codesign::signatureSlot::cms)) {
        const codesign::SignerVerdict verdict
            = checkCodeSigner(blob->from(8), directories, codesign::platformRoot());
        if ((verdict.status == codesign::status::valid) == verdict.chain.empty())
            std::abort();
        if (!verdict.chain.empty() && codesign::platformRoot().is(verdict.chain.back()))
            std::abort();
        lookBehindTheSignature(blob->from(8), directories);
    }
    return 0;
}
