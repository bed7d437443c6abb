#include "codesign/TimeStamp.h"

#include "codesign/CertificateChain.h"
#include "codesign/ObjectIdentifiers.h"
#include "codesign/SignedMessage.h"

#include <memory>

#include <openssl/asn1.h>

namespace quorvane::codesign {

namespace {

// The data that a time stamp authority signs: a hash and the time when it was submitted.
struct StampedRecord {
    HashAlgorithm hash = HashAlgorithm::sha1;
    ByteView imprint;
    std::time_t time = 0;
};

std::optional<std::time_t> parseTime(ByteView text)
{
    const std::unique_ptr<ASN1_TIME, decltype(&ASN1_TIME_free)> time(
        ASN1_STRING_type_new(V_ASN1_GENERALIZEDTIME), ASN1_TIME_free);
    std::tm parts{};
    constexpr std::size_t longestTime = 64;
    if (!time || text.size() > longestTime
        || ASN1_STRING_set(time.get(), text.data(), static_cast<int>(text.size())) != 1
        || ASN1_TIME_to_tm(time.get(), &parts) != 1)
        return std::nullopt;
    return timegm(&parts);
}

std::optional<StampedRecord> parseRecord(ByteView bytes)
{
    const auto record = BerReader(bytes).next(berTag::sequence);
    BerReader fields(record ? record->content : ByteView());
    if (!fields.next(berTag::integer) || !fields.next(berTag::objectIdentifier))
        return std::nullopt;
    const auto imprint = fields.next(berTag::sequence);
    const auto serial = fields.next(berTag::integer);
    const auto time = fields.next(berTag::generalizedTime);
    if (!imprint || !serial || !time)
        return std::nullopt;
    BerReader parts(imprint->content);
    const auto algorithm = parts.next(berTag::sequence);
    const auto hash = parts.next(berTag::octetString);
    const auto identifier
        = BerReader(algorithm ? algorithm->content : ByteView()).next(berTag::objectIdentifier);
    const auto known = identifier ? hashAlgorithmOf(identifier->content) : std::nullopt;
    const auto seconds = parseTime(time->content);
    if (!known || !hash || !seconds)
        return std::nullopt;
    return StampedRecord{*known, hash->content, *seconds};
}

bool isTrustedAuthority(const CertificateChain& chain, std::time_t time, const TrustAnchor& anchor)
{
    return chain.certificates.front().mayStampTime() && chain.endsSelfSigned
        && anchor.is(chain.certificates.back()) && chain.issuersAreAuthorities() && chain.isValidAt(time);
}

TimeStamp judge(const CmsMessage& token, const CmsSigner& stamped,
    const std::vector<Certificate>& certificates, const TrustAnchor& anchor)
{
    TimeStamp result;
    if (!token.signer || !token.content || token.contentType.text() != oid::timeStampInfo)
        return result;
    const auto record = parseRecord(*token.content);
    if (!record || !(hashOf(record->hash, stamped.signature).view() == record->imprint))
        return result;
    std::vector<Certificate> known = certificatesOf(token);
    known.insert(known.end(), certificates.begin(), certificates.end());
    const auto authority = certificateOf(*token.signer, known);
    if (!authority || checkSigner(*token.signer, *token.content, *authority) != SignatureCheck::good)
        return result;
    const bool trusted = isTrustedAuthority(buildChain(*authority, known), record->time, anchor);
    result.status = trusted ? status::valid : status::timeStampNotTrusted;
    result.time = record->time;
    return result;
}

} // namespace

std::optional<TimeStamp> checkTimeStamp(
    const CmsSigner& signer, const std::vector<Certificate>& certificates, const TrustAnchor& anchor)
{
    const auto values = signer.unsignedAttribute(oid::timeStampToken);
    if (!values)
        return std::nullopt;
    const auto token = parseCms(*values);
    return token ? judge(*token, signer, certificates, anchor) : TimeStamp{};
}

} // namespace quorvane::codesign
