#include "codesign/CertificateChain.h"
#include "codesign/ProgramCode.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <utility>

#include <openssl/bn.h>
#include <openssl/param_build.h>

namespace quorvane::test {

namespace {

CmsPlan signedBy(const Identity& signer, std::vector<Identity> others)
{
    CmsPlan plan;
    plan.signer = signer;
    others.push_back(signer);
    plan.certificates = std::move(others);
    return plan;
}

CertificatePlan signerPlan(const std::string& name = "A Signer")
{
    CertificatePlan plan;
    plan.commonName = name;
    plan.extendedUsage = "codeSigning";
    return plan;
}

Identity signerBelow(const Identity& issuer, const CertificatePlan& plan)
{
    return makeIdentity(testKey(5, plan.keyBits), plan, &issuer);
}

CmsPlan stamped(const std::string& time = "20230601120000Z")
{
    const TestAuthority& authority = testAuthority();
    CmsPlan plan;
    plan.stamp = StampPlan{authority.timeStamper, {authority.timeStamper}, time, std::nullopt};
    return plan;
}

// An RSA key of these many bits that nobody has the other half of.
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

// Asked with the platform's own root as the anchor.
std::string answersForOthers(const Bytes& program)
{
    const TemporaryFolder folder;
    return answers(ProgramCode::atPath(folder.write("program", program)).get());
}

} // namespace

TEST(Certificates, OfAnUntrustedRootAreValidButCalledSelfSigned)
{
    EXPECT_EQ(answersForOthers(signedProgram()),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Self-Signed Certificate");
}

TEST(Certificates, NeedARootThatCameAlong)
{
    CmsPlan plan;
    plan.certificates = {testAuthority().signer, testAuthority().intermediate};
    EXPECT_EQ(answers(signedProgram(plan)), unproven("6"));
}

TEST(Certificates, MayComeInAnyOrderWithOthersAmongThem)
{
    const TestAuthority& authority = testAuthority();
    CmsPlan plan;
    plan.certificates = {authority.root, authority.timeStamper, authority.signer, authority.root,
        makeIdentity(testKey(6), signerPlan("Stranger")), authority.intermediate};
    EXPECT_EQ(answers(signedProgram(plan)), signedAnswers);
}

TEST(Certificates, AreChainedByKeysAndNotByNames)
{
    const TestAuthority& authority = testAuthority();
    CertificatePlan sameName;
    sameName.commonName = "Test Authority";
    sameName.authority = true;
    const Identity impostor = makeIdentity(testKey(7), sameName, &authority.root);
    EXPECT_EQ(answers(signedProgram(
                  signedBy(authority.signer, {impostor, authority.intermediate, authority.root}))),
        signedAnswers)
        << "the right one is found behind the wrong one";
    EXPECT_EQ(answers(signedProgram(signedBy(authority.signer, {impostor, authority.root}))), unproven("6"));

    CertificatePlan rootName;
    rootName.commonName = "Test Root";
    const Identity falseRoot = makeIdentity(testKey(8), rootName);
    const Identity signer = signerBelow(falseRoot, signerPlan());
    EXPECT_EQ(answers(signedProgram(signedBy(signer, {authority.root, falseRoot}))),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Self-Signed Certificate")
        << "a trusted root beside the chain trusts nobody";
}

TEST(Certificates, SixtyOfOneNameAndOtherKeysEndInTime)
{
    const TestAuthority& authority = testAuthority();
    CertificatePlan sameName;
    sameName.commonName = "Test Authority";
    sameName.authority = true;
    std::vector<Identity> many(60, makeIdentity(testKey(7), sameName, &authority.root));
    many.push_back(authority.intermediate);
    many.push_back(authority.root);
    EXPECT_EQ(answers(signedProgram(signedBy(authority.signer, many))), signedAnswers);
}

TEST(Certificates, ThatNameEachOtherInACircleEnd)
{
    CertificatePlan one;
    one.commonName = "One";
    one.authority = true;
    CertificatePlan two = one;
    two.commonName = "Two";
    const Identity oneBySelf = makeIdentity(testKey(8), one);
    const Identity twoBySelf = makeIdentity(testKey(9), two);
    const Identity oneByTwo = makeIdentity(testKey(8), one, &twoBySelf);
    const Identity twoByOne = makeIdentity(testKey(9), two, &oneBySelf);
    const Identity signer = signerBelow(oneBySelf, signerPlan());
    EXPECT_EQ(answers(signedProgram(signedBy(signer, {oneByTwo, twoByOne}))), unproven("6"));

    const auto parsed
        = [](const Identity& identity) { return Certificate::parse(identity.encoded()).value(); };
    const CertificateChain chain = buildChain(parsed(signer), {parsed(oneByTwo), parsed(twoByOne)});
    EXPECT_EQ(chain.certificates.size(), 3U) << "none is taken twice";
    EXPECT_FALSE(chain.endsSelfSigned);
}

TEST(Certificates, BetweenSignerAndRootMustBeAuthorities)
{
    CertificatePlan plain;
    plain.commonName = "No Authority";
    const Identity between = makeIdentity(testKey(8), plain, &testAuthority().root);
    const Identity signer = signerBelow(between, signerPlan());
    EXPECT_EQ(answers(signedProgram(signedBy(signer, {between, testAuthority().root}))), unproven("6"));
}

TEST(Certificates, OfTheSignerMustAllowCodeSigning)
{
    const struct {
        const char* usage;
        bool allowed;
    } cases[]
        = {{"codeSigning", true}, {"anyExtendedKeyUsage", true}, {"emailProtection", false}, {"", false}};
    for (const auto& c : cases) {
        CertificatePlan plan = signerPlan();
        plan.extendedUsage = c.usage;
        const Identity signer = signerBelow(testAuthority().root, plan);
        EXPECT_EQ(states(signedProgram(signedBy(signer, {testAuthority().root}))), c.allowed ? "2 2" : "6 6")
            << c.usage;
    }
}

TEST(Certificates, ThatSignThemselvesSufficeForAValidState)
{
    const Identity signer = makeIdentity(testKey(8), signerPlan("Alone"));
    EXPECT_EQ(answers(signedProgram(signedBy(signer, {}))),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Self-Signed Certificate");
}

TEST(Certificates, OfSoftwareSigningAreNamedSo)
{
    const Identity signer = signerBelow(testAuthority().root, signerPlan("Software Signing"));
    EXPECT_EQ(answers(signedProgram(signedBy(signer, {testAuthority().root}))),
        "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Software Signing");
}

TEST(Certificates, WithoutACommonNameAreNamedByUnitElseByOrganization)
{
    CertificatePlan plan = signerPlan();
    plan.commonName.reset();
    plan.organization = "The Organization";
    Identity signer = signerBelow(testAuthority().root, plan);
    const Bytes byOrganization = signedProgram(signedBy(signer, {testAuthority().root}));
    plan.organizationalUnit = "The Unit";
    signer = signerBelow(testAuthority().root, plan);
    const Bytes byUnit = signedProgram(signedBy(signer, {testAuthority().root}));

    EXPECT_NE(answers(byOrganization).find("platform 0, The Organization"), std::string::npos);
    EXPECT_NE(answers(byUnit).find("platform 0, The Unit"), std::string::npos);
}

TEST(Certificates, OfEllipticCurvesAreVerifiedLikeRsaOnes)
{
    for (const char* curve : {"P-256", "P-384", "P-521"}) {
        const Identity signer = makeIdentity(testCurveKey(curve), signerPlan(), &testAuthority().root);
        const CmsPlan plan = signedBy(signer, {testAuthority().root});
        EXPECT_EQ(answers(signedProgram(plan)),
            "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, A Signer")
            << curve;

        SignaturePlan tampered = signedPlan(plan);
        tampered.sign = [&plan](std::vector<Bytes> directories) {
            directories.front()[12] ^= 1U;
            return makeCms(plan, directories);
        };
        EXPECT_EQ(answers(programOf(tampered)), unproven("3")) << curve << " over another directory";
        tampered.sign = [&plan](const std::vector<Bytes>& directories) {
            Bytes cms = makeCms(plan, directories);
            cms[cms.size() - 20] ^= 1U; // within the signature, which stands last
            return cms;
        };
        EXPECT_EQ(answers(programOf(tampered)), unproven("3")) << curve << " with another signature";
    }
}

TEST(Certificates, OfEllipticCurvesMayIssueOthers)
{
    CertificatePlan authority;
    authority.commonName = "Curve Authority";
    authority.authority = true;
    const Identity root = makeIdentity(testCurveKey("P-384"), authority);
    const Identity signer = signerBelow(root, signerPlan());
    EXPECT_EQ(states(signedProgram(signedBy(signer, {root}))), "2 2");

    const Identity impostor = makeIdentity(testCurveKey("P-256"), authority);
    EXPECT_EQ(states(signedProgram(signedBy(signer, {impostor}))), "6 6") << "its name with another key";
}

TEST(Certificates, AreNotUsedWithAKeyOfAnotherKindThanTheSignatureSays)
{
    const Identity curve = makeIdentity(testCurveKey("P-256"), signerPlan(), &testAuthority().root);
    const auto certificate = Certificate::parse(curve.encoded());
    EXPECT_EQ(certificate->verify(KeyKind::rsa, HashAlgorithm::sha256, {}, Bytes(128)),
        SignatureCheck::unsupported);
    EXPECT_EQ(certificate->verify(KeyKind::ellipticCurve, HashAlgorithm::sha256, {}, Bytes(128)),
        SignatureCheck::wrong);
}

TEST(Certificates, LargerThanAnyGenuineOneAreNone)
{
    CertificatePlan plan = signerPlan();
    plan.padding = 60U << 10U;
    EXPECT_TRUE(Certificate::parse(makeIdentity(testKey(1), plan).encoded()));
    plan.padding = 64U << 10U;
    EXPECT_FALSE(Certificate::parse(makeIdentity(testKey(1), plan).encoded()));
}

TEST(Certificates, TwoHundredWrongIssuersAreTriedAndNotMore)
{
    // given certificates that all bear the issuer's name, each with a number of its own
    CertificatePlan sameName;
    sameName.commonName = "Test Authority";
    const auto parsed
        = [](const Identity& identity) { return Certificate::parse(identity.encoded()).value(); };
    std::vector<Certificate> others;
    for (int i = 0; i < 199; ++i)
        others.push_back(parsed(makeIdentity(testKey(7), sameName)));
    others.push_back(parsed(testAuthority().intermediate));
    EXPECT_EQ(buildChain(parsed(testAuthority().signer), others).certificates.size(), 2U);
    others.insert(others.begin(), parsed(makeIdentity(testKey(7), sameName)));
    EXPECT_EQ(buildChain(parsed(testAuthority().signer), others).certificates.size(), 1U);
}

TEST(Certificates, AreUsedWithKeysOfReasonableLengthOnly)
{
    CertificatePlan shortest = signerPlan();
    shortest.keyBits = 512;
    const Identity signer = signerBelow(testAuthority().root, shortest);
    EXPECT_EQ(states(signedProgram(signedBy(signer, {testAuthority().root}))), "2 2");

    for (const auto& key : {testCurveKey("secp256k1"), testCurveKey("P-224"), publicKey(65536, 17),
             publicKey(8193, 17), publicKey(2048, 34)}) {
        CertificatePlan plan = signerPlan();
        const auto certificate = Certificate::parse(makeIdentity(key, plan, &testAuthority().root).encoded());
        ASSERT_TRUE(certificate);
        for (const KeyKind kind : {KeyKind::rsa, KeyKind::ellipticCurve})
            EXPECT_EQ(certificate->verify(kind, HashAlgorithm::sha256, {}, Bytes(128)),
                SignatureCheck::unsupported);
    }
    const auto longest = Certificate::parse(
        makeIdentity(publicKey(8192, 33), signerPlan(), &testAuthority().root).encoded());
    EXPECT_EQ(longest->verify(KeyKind::rsa, HashAlgorithm::sha256, {}, Bytes(1024)), SignatureCheck::wrong);
}

TEST(Certificates, ThatHaveExpiredAreToleratedUnlessTheProgramAsks)
{
    CertificatePlan plan = signerPlan();
    plan.until = "20210101000000Z";
    const Identity expired = signerBelow(testAuthority().root, plan);
    plan.until = "20990101000000Z";
    plan.from = "20980101000000Z";
    const Identity early = signerBelow(testAuthority().root, plan);
    for (const Identity& signer : {expired, early}) {
        SignaturePlan signature = signedPlan(signedBy(signer, {testAuthority().root}));
        EXPECT_EQ(states(programOf(signature)), "2 2");
        signature.directories.front().flags = 0x400;
        EXPECT_EQ(answers(programOf(signature)), unproven("6"));
    }
    SignaturePlan signature = signedPlan();
    signature.directories.front().flags = 0x400;
    EXPECT_EQ(states(programOf(signature)), "2 2") << "a valid one that is asked for";
}

TEST(TimeStamp, OfATrustedAuthorityIsAccepted)
{
    EXPECT_EQ(answers(signedProgram(stamped())), signedAnswers);
}

TEST(TimeStamp, DecidesAtWhichTimeCertificatesMustBeValid)
{
    CertificatePlan plan = signerPlan();
    plan.from = "20210101000000Z";
    plan.until = "20220101000000Z";
    const Identity signer = signerBelow(testAuthority().root, plan);
    const struct {
        const char* time;
        const char* states;
    } cases[] = {{"20210601000000Z", "2 2"}, {"20210601000000.5Z", "2 2"}, {"20200601000000Z", "6 6"},
        {"20220601000000Z", "6 6"}};
    for (const auto& c : cases) {
        CmsPlan cms = signedBy(signer, {testAuthority().root, testAuthority().intermediate});
        cms.stamp = stamped(c.time).stamp;
        SignaturePlan signature = signedPlan(cms);
        signature.directories.front().flags = 0x400;
        EXPECT_EQ(states(programOf(signature)), c.states) << c.time;
    }
}

TEST(TimeStamp, ThatIsBrokenCannotBeTold)
{
    CmsPlan plan = stamped();
    plan.stamp->imprinted = bytesOf("something else");
    EXPECT_EQ(answers(signedProgram(plan)), unproven("6")) << "of something else";
    plan = stamped("no time at all");
    EXPECT_EQ(answers(signedProgram(plan)), unproven("6")) << "without a time";
    plan = stamped();
    plan.stamp->certificates.clear();
    EXPECT_EQ(answers(signedProgram(plan)), unproven("6")) << "without the stamper's certificate";
}

TEST(TimeStamp, MustComeFromATimeStampAuthorityBelowTheAnchor)
{
    EXPECT_EQ(answersForOthers(signedProgram(stamped())), unproven("6")) << "another root";
    CmsPlan plan = stamped();
    plan.stamp->stamper = testAuthority().signer;
    EXPECT_EQ(answers(signedProgram(plan)), unproven("6")) << "a code signer's certificate";
    plan = stamped("20450601000000Z");
    EXPECT_EQ(answers(signedProgram(plan)), unproven("6")) << "everybody has expired at that time";

    CertificatePlan shortLived;
    shortLived.commonName = "Stamps of 2022";
    shortLived.extendedUsage = "timeStamping";
    shortLived.until = "20230101000000Z";
    const Identity stamper = makeIdentity(testKey(4), shortLived, &testAuthority().root);
    for (const auto& [time, answer] : {std::pair(std::string("20220601120000Z"), std::string(signedAnswers)),
             {"20230601120000Z", unproven("6")}}) {
        plan = stamped(time);
        plan.stamp->stamper = stamper;
        plan.stamp->certificates = {stamper};
        EXPECT_EQ(answers(signedProgram(plan)), answer) << "the stamper's certificate at " << time;
    }
}

} // namespace quorvane::test
