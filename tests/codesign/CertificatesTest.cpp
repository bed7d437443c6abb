#include "codesign/CertificateChain.h"
#include "codesign/ProgramCode.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <utility>

#include <openssl/bn.h>
#include <openssl/param_build.h>

namespace quorvane::codesign {

namespace {

test::CmsPlan signedBy(const test::Identity& signer, std::vector<test::Identity> others)
{
    test::CmsPlan plan;
    plan.signer = signer;
    others.push_back(signer);
    plan.certificates = std::move(others);
    return plan;
}

test::CertificatePlan signerPlan(const std::string& name = "A Signer")
{
    test::CertificatePlan plan;
    plan.commonName = name;
    plan.extendedUsage = "codeSigning";
    return plan;
}

test::Identity signerBelow(const test::Identity& issuer, const test::CertificatePlan& plan)
{
    return makeIdentity(test::testKey(5, plan.keyBits), plan, &issuer);
}

// An RSA public key of this many bits, without a private key.
std::shared_ptr<EVP_PKEY> publicKey(int modulusBits, int exponentBits)
{
    const auto number = [](int bits) {
        BIGNUM* value = BN_new();
        BN_set_bit(value, bits - 1);
        BN_set_bit(value, 0);
        return std::shared_ptr<BIGNUM>(value, BN_free);
    };
    const auto modulus = number(modulusBits);
    const auto exponent = number(exponentBits);
    const std::shared_ptr<OSSL_PARAM_BLD> builder(OSSL_PARAM_BLD_new(), OSSL_PARAM_BLD_free);
    OSSL_PARAM_BLD_push_BN(builder.get(), "n", modulus.get());
    OSSL_PARAM_BLD_push_BN(builder.get(), "e", exponent.get());
    const std::shared_ptr<OSSL_PARAM> parameters(OSSL_PARAM_BLD_to_param(builder.get()), OSSL_PARAM_free);
    const std::shared_ptr<EVP_PKEY_CTX> context(
        EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr), EVP_PKEY_CTX_free);
    EVP_PKEY* key = nullptr;
    EVP_PKEY_fromdata_init(context.get());
    EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_PUBLIC_KEY, parameters.get());
    return {key, EVP_PKEY_free};
}

// With the platform's own root as the anchor.
std::string answersForOthers(const Bytes& program)
{
    const test::TemporaryFolder folder;
    return test::answers(ProgramCode::atPath(folder.write("program", program)).get());
}

} // namespace

TEST(Certificates, OfAnUntrustedRootAreValidButCalledSelfSigned)
{
    EXPECT_EQ(answersForOthers(test::signedProgram()),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Self-Signed Certificate");
}

TEST(Certificates, NeedARootThatCameAlong)
{
    test::CmsPlan plan;
    plan.certificates = {test::testAuthority().signer, test::testAuthority().intermediate};
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("6"));
}

TEST(Certificates, MayComeInAnyOrderWithOthersAmongThem)
{
    const test::TestAuthority& authority = test::testAuthority();
    test::CmsPlan plan;
    plan.certificates = {authority.root, authority.timeStamper, authority.signer, authority.root,
        makeIdentity(test::testKey(6), signerPlan("Stranger")), authority.intermediate};
    EXPECT_EQ(test::answers(signedProgram(plan)), test::signedAnswers);
}

TEST(Certificates, AreChainedByKeysAndNotByNames)
{
    const test::TestAuthority& authority = test::testAuthority();
    test::CertificatePlan sameName;
    sameName.commonName = "Test Authority";
    sameName.authority = true;
    const test::Identity impostor = makeIdentity(test::testKey(7), sameName, &authority.root);
    EXPECT_EQ(test::answers(signedProgram(
                  signedBy(authority.signer, {impostor, authority.intermediate, authority.root}))),
        test::signedAnswers)
        << "the right one is found behind the wrong one";
    EXPECT_EQ(test::answers(signedProgram(signedBy(authority.signer, {impostor, authority.root}))),
        test::unproven("6"));

    test::CertificatePlan rootName;
    rootName.commonName = "Test Root";
    const test::Identity falseRoot = makeIdentity(test::testKey(8), rootName);
    const test::Identity signer = signerBelow(falseRoot, signerPlan());
    EXPECT_EQ(test::answers(signedProgram(signedBy(signer, {authority.root, falseRoot}))),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Self-Signed Certificate")
        << "a trusted root beside the chain trusts nobody";
}

TEST(Certificates, SixtyOfOneNameAndOtherKeysEndInTime)
{
    const test::TestAuthority& authority = test::testAuthority();
    test::CertificatePlan sameName;
    sameName.commonName = "Test Authority";
    sameName.authority = true;
    std::vector<test::Identity> many(60, makeIdentity(test::testKey(7), sameName, &authority.root));
    many.push_back(authority.intermediate);
    many.push_back(authority.root);
    EXPECT_EQ(test::answers(signedProgram(signedBy(authority.signer, many))), test::signedAnswers);
}

TEST(Certificates, ThatNameEachOtherInACircleEnd)
{
    test::CertificatePlan one;
    one.commonName = "One";
    one.authority = true;
    test::CertificatePlan two = one;
    two.commonName = "Two";
    const test::Identity oneBySelf = makeIdentity(test::testKey(8), one);
    const test::Identity twoBySelf = makeIdentity(test::testKey(9), two);
    const test::Identity oneByTwo = makeIdentity(test::testKey(8), one, &twoBySelf);
    const test::Identity twoByOne = makeIdentity(test::testKey(9), two, &oneBySelf);
    const test::Identity signer = signerBelow(oneBySelf, signerPlan());
    EXPECT_EQ(test::answers(signedProgram(signedBy(signer, {oneByTwo, twoByOne}))), test::unproven("6"));

    const auto parsed
        = [](const test::Identity& identity) { return Certificate::parse(identity.encoded()).value(); };
    const CertificateChain chain = buildChain(parsed(signer), {parsed(oneByTwo), parsed(twoByOne)});
    EXPECT_EQ(chain.certificates.size(), 3U) << "none is taken twice";
    EXPECT_FALSE(chain.endsSelfSigned);
}

TEST(Certificates, BetweenSignerAndRootMustBeAuthorities)
{
    test::CertificatePlan plain;
    plain.commonName = "No Authority";
    const test::Identity between = makeIdentity(test::testKey(8), plain, &test::testAuthority().root);
    const test::Identity signer = signerBelow(between, signerPlan());
    EXPECT_EQ(test::answers(signedProgram(signedBy(signer, {between, test::testAuthority().root}))),
        test::unproven("6"));
}

TEST(Certificates, OfTheSignerMustAllowCodeSigning)
{
    const struct {
        const char* usage;
        bool allowed;
    } cases[]
        = {{"codeSigning", true}, {"anyExtendedKeyUsage", true}, {"emailProtection", false}, {"", false}};
    for (const auto& c : cases) {
        test::CertificatePlan plan = signerPlan();
        plan.extendedUsage = c.usage;
        const test::Identity signer = signerBelow(test::testAuthority().root, plan);
        EXPECT_EQ(test::states(signedProgram(signedBy(signer, {test::testAuthority().root}))),
            c.allowed ? "2 2" : "6 6")
            << c.usage;
    }
}

TEST(Certificates, ThatSignThemselvesSufficeForAValidState)
{
    const test::Identity signer = makeIdentity(test::testKey(8), signerPlan("Alone"));
    EXPECT_EQ(test::answers(signedProgram(signedBy(signer, {}))),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Self-Signed Certificate");
}

TEST(Certificates, OfSoftwareSigningAreNamedSo)
{
    const test::Identity signer = signerBelow(test::testAuthority().root, signerPlan("Software Signing"));
    EXPECT_EQ(test::answers(signedProgram(signedBy(signer, {test::testAuthority().root}))),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Software Signing");
}

TEST(Certificates, WithoutACommonNameAreNamedByUnitElseByOrganization)
{
    test::CertificatePlan plan = signerPlan();
    plan.commonName.reset();
    plan.organization = "The Organization";
    test::Identity signer = signerBelow(test::testAuthority().root, plan);
    const Bytes byOrganization = signedProgram(signedBy(signer, {test::testAuthority().root}));
    plan.organizationalUnit = "The Unit";
    signer = signerBelow(test::testAuthority().root, plan);
    const Bytes byUnit = signedProgram(signedBy(signer, {test::testAuthority().root}));

    EXPECT_NE(test::answers(byOrganization).find("platform 0, The Organization"), std::string::npos);
    EXPECT_NE(test::answers(byUnit).find("platform 0, The Unit"), std::string::npos);
}

TEST(Certificates, OfEllipticCurvesAreVerifiedLikeRsaOnes)
{
    for (const char* curve : {"P-256", "P-384", "P-521"}) {
        const test::Identity signer
            = makeIdentity(test::testCurveKey(curve), signerPlan(), &test::testAuthority().root);
        const test::CmsPlan plan = signedBy(signer, {test::testAuthority().root});
        EXPECT_EQ(test::answers(signedProgram(plan)),
            "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, A Signer")
            << curve;

        test::SignaturePlan tampered = signedPlan(plan);
        tampered.sign = [&plan](std::vector<Bytes> directories) {
            directories.front()[12] ^= 1U;
            return makeCms(plan, directories);
        };
        EXPECT_EQ(test::answers(programOf(tampered)), test::unproven("3"))
            << curve << " over another directory";
        tampered.sign = [&plan](const std::vector<Bytes>& directories) {
            Bytes cms = makeCms(plan, directories);
            cms[cms.size() - 20] ^= 1U; // within the signature, which comes last
            return cms;
        };
        EXPECT_EQ(test::answers(programOf(tampered)), test::unproven("3"))
            << curve << " with another signature";
    }
}

TEST(Certificates, OfEllipticCurvesMayIssueOthers)
{
    test::CertificatePlan authority;
    authority.commonName = "Curve Authority";
    authority.authority = true;
    const test::Identity root = makeIdentity(test::testCurveKey("P-384"), authority);
    const test::Identity signer = signerBelow(root, signerPlan());
    EXPECT_EQ(test::states(signedProgram(signedBy(signer, {root}))), "2 2");

    const test::Identity impostor = makeIdentity(test::testCurveKey("P-256"), authority);
    EXPECT_EQ(test::states(signedProgram(signedBy(signer, {impostor}))), "6 6")
        << "its name with another key";
}

TEST(Certificates, AreNotUsedWithAKeyOfAnotherKindThanTheSignatureSays)
{
    const test::Identity curve
        = makeIdentity(test::testCurveKey("P-256"), signerPlan(), &test::testAuthority().root);
    const auto certificate = Certificate::parse(curve.encoded());
    EXPECT_EQ(certificate->verify(KeyKind::rsa, HashAlgorithm::sha256, {}, Bytes(128)),
        SignatureCheck::unsupported);
    EXPECT_EQ(certificate->verify(KeyKind::ellipticCurve, HashAlgorithm::sha256, {}, Bytes(128)),
        SignatureCheck::wrong);
}

TEST(Certificates, LargerThanAnyGenuineOneAreNone)
{
    test::CertificatePlan plan = signerPlan();
    plan.padding = 60U << 10U;
    EXPECT_TRUE(Certificate::parse(makeIdentity(test::testKey(1), plan).encoded()));
    plan.padding = 64U << 10U;
    EXPECT_FALSE(Certificate::parse(makeIdentity(test::testKey(1), plan).encoded()));
}

TEST(Certificates, TwoHundredWrongIssuersAreTriedAndNotMore)
{
    // given certificates that all have the issuer's name, each with a different number
    test::CertificatePlan sameName;
    sameName.commonName = "Test Authority";
    const auto parsed
        = [](const test::Identity& identity) { return Certificate::parse(identity.encoded()).value(); };
    std::vector<Certificate> others;
    for (int i = 0; i < 199; ++i)
        others.push_back(parsed(makeIdentity(test::testKey(7), sameName)));
    others.push_back(parsed(test::testAuthority().intermediate));
    EXPECT_EQ(buildChain(parsed(test::testAuthority().signer), others).certificates.size(), 2U);
    others.insert(others.begin(), parsed(makeIdentity(test::testKey(7), sameName)));
    EXPECT_EQ(buildChain(parsed(test::testAuthority().signer), others).certificates.size(), 1U);
}

TEST(Certificates, AreUsedWithKeysOfReasonableLengthOnly)
{
    test::CertificatePlan shortest = signerPlan();
    shortest.keyBits = 512;
    const test::Identity signer = signerBelow(test::testAuthority().root, shortest);
    EXPECT_EQ(test::states(signedProgram(signedBy(signer, {test::testAuthority().root}))), "2 2");

    for (const auto& key : {test::testCurveKey("secp256k1"), test::testCurveKey("P-224"), publicKey(511, 17),
             publicKey(65536, 17), publicKey(8193, 17), publicKey(2048, 34)}) {
        test::CertificatePlan plan = signerPlan();
        const auto certificate
            = Certificate::parse(makeIdentity(key, plan, &test::testAuthority().root).encoded());
        ASSERT_TRUE(certificate);
        for (const KeyKind kind : {KeyKind::rsa, KeyKind::ellipticCurve})
            EXPECT_EQ(certificate->verify(kind, HashAlgorithm::sha256, {}, Bytes(128)),
                SignatureCheck::unsupported);
    }
    const auto longest = Certificate::parse(
        makeIdentity(publicKey(8192, 33), signerPlan(), &test::testAuthority().root).encoded());
    EXPECT_EQ(longest->verify(KeyKind::rsa, HashAlgorithm::sha256, {}, Bytes(1024)), SignatureCheck::wrong);
}

TEST(Certificates, ThatHaveExpiredAreToleratedUnlessTheProgramAsks)
{
    test::CertificatePlan plan = signerPlan();
    plan.until = "20210101000000Z";
    const test::Identity expired = signerBelow(test::testAuthority().root, plan);
    plan.until = "20990101000000Z";
    plan.from = "20980101000000Z";
    const test::Identity early = signerBelow(test::testAuthority().root, plan);
    for (const test::Identity& signer : {expired, early}) {
        test::SignaturePlan signature = signedPlan(signedBy(signer, {test::testAuthority().root}));
        EXPECT_EQ(test::states(programOf(signature)), "2 2");
        signature.directories.front().flags = 0x400;
        EXPECT_EQ(test::answers(programOf(signature)), test::unproven("6"));
    }
    test::SignaturePlan signature = test::signedPlan();
    signature.directories.front().flags = 0x400;
    EXPECT_EQ(test::states(programOf(signature)), "2 2") << "a valid one that is asked for";
}

} // namespace quorvane::codesign
