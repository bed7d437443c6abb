#include "codesign/SignerCheck.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace quorvane::codesign {

namespace {

test::SignaturePlan twoDirectories(const test::CmsPlan& cms)
{
    test::SignaturePlan plan = signedPlan(cms);
    test::DirectoryPlan alternate = plan.directories.front();
    plan.directories.front().hashType = 1;
    plan.directories.push_back(alternate);
    return plan;
}

} // namespace

TEST(Signer, ProvesTeamAndCertificates)
{
    EXPECT_EQ(test::answers(test::signedProgram()), test::signedAnswers);
}

TEST(Signer, IsReadInDefiniteAndIndefiniteLengths)
{
    test::CmsPlan plan;
    plan.indefiniteLengths = false;
    EXPECT_EQ(test::answers(signedProgram(plan)), test::signedAnswers);
}

TEST(Signer, IsVerifiedWithEveryDigest)
{
    for (const char* hash : {"SHA1", "SHA256", "SHA384"}) {
        test::CmsPlan plan;
        plan.hash = hash;
        EXPECT_EQ(test::answers(signedProgram(plan)), test::signedAnswers) << hash;
    }
}

TEST(Signer, WithoutAttributesSignsTheCodeDirectoryItself)
{
    test::CmsPlan plan;
    plan.signedAttributes = false;
    EXPECT_EQ(test::answers(signedProgram(plan)), test::signedAnswers);
    EXPECT_EQ(test::states(programOf(twoDirectories(plan))), "3 3") << "nothing protects the alternate";
}

TEST(Signer, MustListTheHashesOfAllDirectories)
{
    EXPECT_EQ(test::states(programOf(twoDirectories({}))), "2 2");
    test::CmsPlan plan;
    plan.setUnsorted = true;
    EXPECT_EQ(test::states(programOf(twoDirectories(plan))), "2 2")
        << "values in an order that encoding would change";
    plan.listAsSet = false;
    EXPECT_EQ(test::states(programOf(twoDirectories(plan))), "2 2") << "the first form alone";
    plan.listAsPropertyList = false;
    EXPECT_EQ(test::states(programOf(twoDirectories(plan))), "3 3") << "no form";
    plan.listAsSet = true;
    EXPECT_EQ(test::states(programOf(twoDirectories(plan))), "2 2") << "the second form alone";
}

TEST(Signer, WhoListsOtherHashesFails)
{
    for (const bool propertyList : {false, true}) {
        test::CmsPlan cms;
        cms.listAsPropertyList = propertyList;
        cms.listAsSet = !propertyList;
        test::SignaturePlan plan = twoDirectories(cms);
        plan.sign = [cms](std::vector<Bytes> directories) {
            directories.back().back() ^= 1U; // the list is of another alternate
            return makeCms(cms, directories);
        };
        EXPECT_EQ(test::answers(programOf(plan)), test::unproven("3"));
        plan.sign = [cms](std::vector<Bytes> directories) {
            directories.pop_back();
            return makeCms(cms, directories);
        };
        EXPECT_EQ(test::answers(programOf(plan)), test::unproven("3")) << "the list is short of one";
    }
}

TEST(Signer, MayBeNamedByTheIdentifierOfItsKey)
{
    const test::TestAuthority& authority = test::testAuthority();
    test::CertificatePlan plan;
    plan.commonName = "Test Signer (TEAM123456)";
    plan.organizationalUnit = "TEAM123456";
    plan.extendedUsage = "critical,codeSigning";
    plan.criticalExtension = "1.2.840.113635.100.6.1.13";
    plan.keyIdentifier = "AABBCC";
    const test::Identity other = makeIdentity(test::testKey(20), plan, &authority.intermediate);
    plan.keyIdentifier = "AABBCCDD";
    test::CmsPlan cms;
    cms.signer = makeIdentity(test::testKey(21), plan, &authority.intermediate);
    cms.certificates = {other, authority.intermediate, authority.root, cms.signer};
    cms.signerKeyIdentifier = {0xAA, 0xBB, 0xCC, 0xDD};
    EXPECT_EQ(test::answers(signedProgram(cms)), test::signedAnswers);

    cms.signerKeyIdentifier = {0xAA, 0xBB, 0xCC};
    EXPECT_EQ(test::answers(signedProgram(cms)), test::unproven("3")) << "the key of another certificate";
    cms.signerKeyIdentifier = {0xAA, 0xBB};
    EXPECT_EQ(test::answers(signedProgram(cms)), test::unproven("3")) << "no certificate's key";
}

TEST(Signer, WhoseHashListHoldsWhatIsNoPairFails)
{
    const Bytes sha256 = test::objectIdentifier("2.16.840.1.101.3.4.2.1");
    const Bytes unknown = test::objectIdentifier("1.2.3.4");
    const Bytes hash = test::element(0x04, Bytes(32, 0x11));
    const struct {
        const char* what;
        Bytes entry;
    } cases[] = {{"an identifier alone", test::elementOf(0x30, {sha256})},
        {"a hash alone", test::elementOf(0x30, {hash})},
        {"a hash that names no algorithm", test::elementOf(0x30, {unknown, hash})},
        {"nothing", test::elementOf(0x30, {})}, {"no sequence", hash},
        {"what is cut off", {0x30, 0x20, 0x06}}};
    for (const auto& c : cases) {
        test::CmsPlan cms;
        cms.listAsPropertyList = false;
        cms.alter = [&](std::vector<Bytes>& attributes) {
            attributes.back() = test::attribute("1.2.840.113635.100.9.2", {c.entry});
        };
        EXPECT_EQ(test::answers(signedProgram(cms)), test::unproven("3")) << c.what;
    }
}

TEST(Signer, OfAnotherDirectoryFails)
{
    for (const bool lists : {true, false}) {
        for (const bool attributes : {true, false}) {
            test::CmsPlan cms;
            cms.listAsPropertyList = cms.listAsSet = lists;
            cms.signedAttributes = attributes;
            test::SignaturePlan plan = signedPlan(cms);
            ASSERT_EQ(test::answers(programOf(plan)), test::signedAnswers);
            plan.sign = [cms](std::vector<Bytes> directories) {
                directories.front()[12] ^= 1U;
                return makeCms(cms, directories);
            };
            EXPECT_EQ(test::answers(programOf(plan)), test::unproven("3")) << lists << attributes;
        }
    }
}

TEST(Signer, WhoseAttributesOrSignatureWereChangedFails)
{
    test::SignaturePlan plan = test::signedPlan();
    const auto sign = plan.sign;
    plan.sign = [sign](const std::vector<Bytes>& directories) {
        Bytes cms = sign(directories);
        // The message digest attribute: changing another attribute's type would not affect the digest.
        const Bytes contentType = test::objectIdentifier("1.2.840.113549.1.9.3");
        const std::size_t at = ByteView(cms).text().find(ByteView(contentType).text());
        cms[at + contentType.size() - 1] = 5;
        return cms;
    };
    EXPECT_EQ(test::answers(programOf(plan)), test::unproven("3"));

    plan.sign = [sign](const std::vector<Bytes>& directories) {
        Bytes cms = sign(directories);
        cms[cms.size() - 20] ^= 1U; // within the signature, which comes last
        return cms;
    };
    EXPECT_EQ(test::answers(programOf(plan)), test::unproven("3"));
}

TEST(Signer, ThatCannotBeReadCannotBeTold)
{
    for (const Bytes& cms :
        {test::bytesOf("rubbish"), Bytes{0x30, 0x80}, Bytes{0x30, 0x80, 0, 0}, Bytes(50000, 0x30)}) {
        test::SignaturePlan plan = test::signedPlan();
        plan.sign = [&cms](const std::vector<Bytes>&) { return cms; };
        EXPECT_EQ(test::answers(programOf(plan)), test::unproven("6"));
    }
}

TEST(Signer, BehindThousandsOfNestedLengthsCannotBeTold)
{
    Bytes deep;
    for (int i = 0; i < 2000; ++i)
        test::append(deep, Bytes{0x30, 0x80});
    test::SignaturePlan plan = test::signedPlan();
    plan.sign = [&deep](const std::vector<Bytes>&) { return deep; };
    EXPECT_EQ(test::answers(programOf(plan)), test::unproven("6"));
}

TEST(Signer, InAMessageOfMoreThanAMebibyteCannotBeTold)
{
    for (const std::size_t padding : {1000000U, 1100000U}) {
        test::CmsPlan plan;
        plan.alter = [padding](std::vector<Bytes>& attributes) {
            attributes.push_back(test::elementOf(0x30,
                {test::objectIdentifier("1.2.3"),
                    test::elementOf(0x31, {test::element(0x04, Bytes(padding, 'x'))})}));
        };
        test::SignaturePlan signature = signedPlan(plan);
        const Bytes code(test::codeLength, 0x90);
        const auto container = SignatureContainer::parse(makeSignature(signature, code));
        const CodeDirectories directories = loadCodeDirectories(*container);
        const auto verdict
            = checkCodeSigner(container->blob(signatureSlot::cms)->from(8), directories, test::testAnchor());
        EXPECT_EQ(verdict.status, padding < (1U << 20U) ? status::valid : status::cmsUnreadable) << padding;
    }
}

TEST(Signer, OfAnUnknownHashOrKindOfKeyCannotBeTold)
{
    const std::pair<Bytes, Bytes> replacements[] = {
        {test::objectIdentifier("2.16.840.1.101.3.4.2.1"), test::objectIdentifier("2.16.840.1.101.3.4.2.9")},
        {test::objectIdentifier("1.2.840.113549.1.1.1"), test::objectIdentifier("1.2.840.113549.1.1.99")}};
    for (const auto& [known, unknown] : replacements) {
        test::CmsPlan cms;
        cms.listAsPropertyList = cms.listAsSet = false;
        test::SignaturePlan plan = signedPlan(cms);
        plan.sign = [&known = known, &unknown = unknown, cms](const std::vector<Bytes>& directories) {
            Bytes message = makeCms(cms, directories);
            const auto last
                = std::find_end(message.begin(), message.end(), known.begin(), known.end()); // the signer's
            std::copy(unknown.begin(), unknown.end(), last);
            return message;
        };
        EXPECT_EQ(test::answers(programOf(plan)), test::unproven("6"));
    }
}

TEST(Signer, BesideACertificateThatCannotBeReadIsFound)
{
    test::CmsPlan cms;
    cms.certificates.insert(cms.certificates.begin(), test::testAuthority().timeStamper);
    test::SignaturePlan plan = signedPlan(cms);
    plan.sign = [cms](const std::vector<Bytes>& directories) {
        Bytes message = makeCms(cms, directories);
        const Bytes first = cms.certificates.front().encoded();
        const auto at = std::search(message.begin(), message.end(), first.begin(), first.end());
        at[4] = 0x04; // what should be the certificate's contents
        EXPECT_FALSE(Certificate::parse(ByteView(&*at, first.size())));
        return message;
    };
    EXPECT_EQ(test::answers(programOf(plan)), test::signedAnswers);
}

TEST(Signer, WithoutItsCertificateFails)
{
    test::CmsPlan plan;
    plan.certificates = {test::testAuthority().intermediate, test::testAuthority().root};
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("3"));
}

} // namespace quorvane::codesign
