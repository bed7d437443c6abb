#include "codesign/SignatureQueries.h"

#include <algorithm>
#include <utility>

namespace quorvane::codesign {

namespace {

constexpr std::string_view softwareSigning = "Software Signing";
constexpr std::string_view selfSigned = "Self-Signed Certificate";

std::optional<SigningProperty> textProperty(std::optional<std::string> text)
{
    if (!text || *text == "(null)")
        return std::nullopt;
    return std::move(*text);
}

} // namespace

std::int32_t codeSignState(const CodeObject* code, std::uint32_t flags)
{
    if (code == nullptr)
        return signatureState::cannotTell;
    switch (code->checkValidity(flags)) {
    case status::valid:
        return signatureState::valid;
    case status::unsignedCode:
        return signatureState::unsignedCode;
    case status::signatureFailed:
    case status::signatureInvalid:
        return signatureState::failed;
    case status::notVerifiable:
        return signatureState::notVerifiable;
    case status::unsupported:
        return signatureState::unsupported;
    default:
        return signatureState::cannotTell;
    }
}

std::optional<SigningProperty> codeSignProperty(const CodeObject* code, std::string_view key)
{
    if (code == nullptr)
        return std::nullopt;
    SigningInformation information = code->signingInformation();
    if (key == kSecCodeInfoIdentifier)
        return textProperty(std::move(information.identifier));
    if (key == kSecCodeInfoTeamIdentifier)
        return textProperty(std::move(information.teamIdentifier));
    if (key == kSecCodeInfoCertificates && !information.certificates.empty())
        return std::move(information.certificates);
    if (key == platformIdentifierKey && information.platformIdentifier)
        return *information.platformIdentifier;
    return std::nullopt;
}

std::optional<std::string> codeSignText(const CodeObject* code, std::string_view key)
{
    const auto property = codeSignProperty(code, key);
    const auto* text = property ? std::get_if<std::string>(&*property) : nullptr;
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::int32_t codeSignPlatformIdentifier(const CodeObject* code)
{
    const auto property = codeSignProperty(code, platformIdentifierKey);
    const auto* number = property ? std::get_if<std::int32_t>(&*property) : nullptr;
    return number == nullptr ? 0 : *number;
}

std::string codeSignCertInfo(const CodeObject* code)
{
    const auto property = codeSignProperty(code, kSecCodeInfoCertificates);
    const auto* certificates = property ? std::get_if<std::vector<CertificateFacts>>(&*property) : nullptr;
    if (certificates == nullptr || certificates->empty())
        return std::string(selfSigned);
    std::string answer = certificates->front().longDescription.value_or("");
    bool trusted = false;
    for (const CertificateFacts& certificate : *certificates) {
        if (getCertificateStringContent(certificate.values, kSecOIDX509V1SubjectName, kSecOIDCommonName)
            == softwareSigning)
            answer = softwareSigning;
        else
            trusted = evaluateCertificateTrust(certificate) != 0;
    }
    return trusted ? answer : std::string(selfSigned);
}

bool isSignedUnderPlatformRoot(const CodeObject* code)
{
    const auto property = codeSignProperty(code, kSecCodeInfoCertificates);
    const auto* certificates = property ? std::get_if<std::vector<CertificateFacts>>(&*property) : nullptr;
    return certificates != nullptr && evaluateCertificateTrust(certificates->back()) != 0;
}

std::optional<std::string> getCertificateStringContent(
    const CertificateValues& values, std::string_view fieldKey, std::string_view label)
{
    const auto field = values.find(fieldKey);
    if (field == values.end() || !field->second)
        return std::nullopt;
    const auto item = std::find_if(field->second->begin(), field->second->end(),
        [label](const CertificateItem& one) { return one.label == label; });
    return item == field->second->end() ? std::nullopt : std::optional(item->value);
}

std::int32_t evaluateCertificateTrust(const CertificateFacts& certificate)
{
    const bool trusted
        = certificate.trust == trustResult::proceed || certificate.trust == trustResult::unspecified;
    return trusted ? 1 : 0;
}

} // namespace quorvane::codesign
