#include "codesign/SignerCheck.h"

#include "codesign/CertificateChain.h"
#include "codesign/HashLists.h"
#include "codesign/SignedMessage.h"
#include "codesign/TimeStamp.h"

#include <ctime>

namespace quorvane::codesign {

namespace {

ValidityStatus statusOf(SignatureCheck check)
{
    switch (check) {
    case SignatureCheck::good:
        return status::valid;
    case SignatureCheck::wrong:
        return status::signatureFailed;
    default:
        return status::cmsUnreadable;
    }
}

ValidityStatus checkTimes(
    const CertificateChain& chain, const std::optional<TimeStamp>& stamp, const CodeDirectories& directories)
{
    if (stamp && stamp->status != status::valid)
        return stamp->status;
    if (stamp)
        return chain.isValidAt(stamp->time) ? status::valid : status::expired;
    const bool mustBeValidNow = (directories.strongest().flags() & codeDirectoryFlag::checkExpiration) != 0;
    return !mustBeValidNow || chain.isValidAt(std::time(nullptr)) ? status::valid : status::expired;
}

ValidityStatus checkChain(const CertificateChain& chain)
{
    const bool sound
        = chain.endsSelfSigned && chain.issuersAreAuthorities() && chain.certificates.front().maySignCode();
    return sound ? status::valid : status::notTrusted;
}

} // namespace

SignerVerdict checkCodeSigner(ByteView cms, const CodeDirectories& directories, const TrustAnchor& anchor)
{
    SignerVerdict verdict;
    const auto message = parseCms(cms);
    if (!message)
        return verdict;
    verdict.status = status::signatureFailed;
    const std::vector<Certificate> certificates = certificatesOf(*message);
    const auto leaf = message->signer ? certificateOf(*message->signer, certificates) : std::nullopt;
    if (!leaf)
        return verdict;

    verdict.status = statusOf(checkSigner(*message->signer, directories.first().blob(), *leaf));
    if (verdict.status == status::valid && !hashListsMatch(*message->signer, directories))
        verdict.status = status::signatureFailed;
    if (verdict.status != status::valid)
        return verdict;

    const CertificateChain chain = buildChain(*leaf, certificates);
    verdict.status = checkTimes(chain, checkTimeStamp(*message->signer, certificates, anchor), directories);
    if (verdict.status == status::valid)
        verdict.status = checkChain(chain);
    if (verdict.status == status::valid)
        verdict.chain = chain.certificates;
    return verdict;
}

} // namespace quorvane::codesign
