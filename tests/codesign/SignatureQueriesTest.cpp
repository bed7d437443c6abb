#include "codesign/SignatureQueries.h"

#include <gtest/gtest.h>

namespace quorvane::codesign {

namespace {

// Code with configured facts.
class KnownCode : public CodeObject {
public:
    ValidityStatus validity = status::valid;
    SigningInformation information;
    mutable std::uint32_t askedFlags = 0;

    ValidityStatus checkValidity(std::uint32_t flags) const override
    {
        askedFlags = flags;
        return validity;
    }
    SigningInformation signingInformation() const override { return information; }
};

CertificateFacts certificate(const std::string& name, std::uint32_t trust)
{
    CertificateFacts facts;
    facts.values[kSecOIDX509V1SubjectName] = {{{kSecOIDCommonName, name}}};
    facts.longDescription = "long " + name;
    facts.trust = trust;
    return facts;
}

std::string certInfo(std::vector<CertificateFacts> certificates)
{
    KnownCode code;
    code.information.certificates = std::move(certificates);
    return codeSignCertInfo(&code);
}

constexpr auto trusted = trustResult::unspecified;
constexpr auto untrusted = trustResult::recoverableFailure;

} // namespace

TEST(CodeSignState, MapsEachStatusOfTheTableAndEveryOtherToSix)
{
    const struct {
        ValidityStatus validity;
        std::int32_t state;
    } cases[] = {{-67062, 1}, {0, 2}, {-67061, 3}, {-67045, 3}, {-67060, 4}, {-67059, 5}, {-67058, 6},
        {-67030, 6}, {-67010, 6}, {-25257, 6}, {1, 6}, {-1, 6}};
    for (const auto& c : cases) {
        KnownCode code;
        code.validity = c.validity;
        EXPECT_EQ(codeSignState(&code, 6), c.state) << c.validity;
    }
}

TEST(CodeSignState, OfCodeThatCouldNotBeMadeIsSix)
{
    EXPECT_EQ(codeSignState(nullptr, 6), 6);
}

TEST(CodeSignState, HandsTheFlagWordOnUnchanged)
{
    EXPECT_EQ(basicFlags, 6U);
    EXPECT_EQ(strictFlags, 0x40000014U);
    EXPECT_EQ(dynamicFlags, 0x40000000U);
    const KnownCode code;
    codeSignState(&code, 0xdeadbeef);
    EXPECT_EQ(code.askedFlags, 0xdeadbeefU);
}

TEST(CodeSignProperty, IsNoneForTheTextOfNothing)
{
    KnownCode code;
    code.information.identifier = "(null)";
    code.information.teamIdentifier = "(null)";

    EXPECT_FALSE(codeSignText(&code, kSecCodeInfoIdentifier));
    EXPECT_FALSE(codeSignText(&code, kSecCodeInfoTeamIdentifier));
}

TEST(CodeSignProperty, IsWhatTheSignatureSaysUnderTheKey)
{
    KnownCode code;
    code.information.identifier = "com.example";
    code.information.teamIdentifier = "TEAM";
    code.information.platformIdentifier = 13;

    EXPECT_EQ(codeSignText(&code, kSecCodeInfoIdentifier), "com.example");
    EXPECT_EQ(codeSignText(&code, kSecCodeInfoTeamIdentifier), "TEAM");
    EXPECT_EQ(codeSignPlatformIdentifier(&code), 13);
    EXPECT_EQ(std::get<std::int32_t>(*codeSignProperty(&code, "platform-identifier")), 13);
    EXPECT_FALSE(codeSignProperty(&code, "another key"));
    EXPECT_FALSE(codeSignText(&code, platformIdentifierKey)) << "a number is no text";
}

TEST(CodeSignProperty, OfNothingIsNoneAndItsPlatformZero)
{
    const KnownCode nothing;
    for (const CodeObject* code :
        {static_cast<const CodeObject*>(nullptr), static_cast<const CodeObject*>(&nothing)}) {
        EXPECT_FALSE(codeSignText(code, kSecCodeInfoIdentifier));
        EXPECT_FALSE(codeSignText(code, kSecCodeInfoTeamIdentifier));
        EXPECT_FALSE(codeSignProperty(code, kSecCodeInfoCertificates));
        EXPECT_EQ(codeSignPlatformIdentifier(code), 0);
        EXPECT_EQ(codeSignCertInfo(code), "Self-Signed Certificate");
    }
}

TEST(CodeSignCertInfo, DependsOnTheLastCertificateThatIsNotSoftwareSigning)
{
    const struct {
        const char* why;
        std::vector<CertificateFacts> chain;
        const char* text;
    } cases[] = {
        {"a trusted root decides for the platform's signer",
            {certificate("Software Signing", untrusted), certificate("Authority", untrusted),
                certificate("Root", trusted)},
            "Software Signing"},
        {"the same with an untrusted root",
            {certificate("Software Signing", untrusted), certificate("Root", untrusted)},
            "Self-Signed Certificate"},
        {"any other signer is named in full", {certificate("Maker", untrusted), certificate("Root", trusted)},
            "long Maker"},
        {"a trusted certificate before an untrusted one is forgotten",
            {certificate("Maker", trusted), certificate("Root", untrusted)}, "Self-Signed Certificate"},
        {"the mark of a certificate named Software Signing does not count",
            {certificate("Maker", trusted), certificate("Software Signing", untrusted)}, "Software Signing"},
        {"alone it leaves nothing trusted", {certificate("Software Signing", trusted)},
            "Self-Signed Certificate"},
        {"the name must be exact",
            {certificate("Software Signing ", untrusted), certificate("Root", trusted)},
            "long Software Signing "},
        {"no certificates", {}, "Self-Signed Certificate"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(certInfo(c.chain), c.text) << c.why;
}

TEST(IsSignedUnderPlatformRoot, IsTrueWhenTheLastCertificateIsTrusted)
{
    KnownCode code;
    EXPECT_FALSE(isSignedUnderPlatformRoot(&code));
    EXPECT_FALSE(isSignedUnderPlatformRoot(nullptr));
    code.information.certificates = {certificate("Maker", untrusted), certificate("Root", trusted)};
    EXPECT_TRUE(isSignedUnderPlatformRoot(&code));
    code.information.certificates = {certificate("Maker", trusted), certificate("Root", untrusted)};
    EXPECT_FALSE(isSignedUnderPlatformRoot(&code));
}

TEST(EvaluateCertificateTrust, IsTrueForProceedAndUnspecifiedOnly)
{
    for (std::uint32_t result = 0; result < 8; ++result)
        EXPECT_EQ(evaluateCertificateTrust(certificate("x", result)), result == 1 || result == 4 ? 1 : 0)
            << result;
}

TEST(GetCertificateStringContent, IsTheFirstValueWithTheLabelOrNone)
{
    CertificateValues values;
    values["subject"] = {{{"a", "1"}, {"b", "2"}, {"b", "3"}}};
    values["without list"] = std::nullopt;

    EXPECT_EQ(getCertificateStringContent(values, "subject", "b"), "2");
    EXPECT_FALSE(getCertificateStringContent(values, "subject", "c"));
    EXPECT_FALSE(getCertificateStringContent(values, "issuer", "a"));
    EXPECT_FALSE(getCertificateStringContent(values, "without list", "a"));
}

} // namespace quorvane::codesign
