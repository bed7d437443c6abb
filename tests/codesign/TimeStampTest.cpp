#include "codesign/TimeStamp.h"

#include "codesign/SignedMessage.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace quorvane::codesign {

namespace {

test::CmsPlan stamped(const std::string& time = "20230601120000Z")
{
    const test::TestAuthority& authority = test::testAuthority();
    test::CmsPlan plan;
    plan.stamp.emplace();
    plan.stamp->stamper = authority.timeStamper;
    plan.stamp->certificates = {authority.timeStamper};
    plan.stamp->time = time;
    return plan;
}

// The time stamp of a message over some directory.
TimeStamp stampOf(const test::CmsPlan& plan, const TrustAnchor& anchor = test::testAnchor())
{
    const Bytes cms = test::makeCms(plan, {test::makeDirectory({}, {}, {})});
    const auto message = parseCms(cms);
    return checkTimeStamp(*message->signer, certificatesOf(*message), anchor).value();
}

ValidityStatus statusWithRecord(const std::function<void(std::vector<Bytes>& parts)>& alter)
{
    test::CmsPlan plan = stamped();
    plan.stamp->alterRecord = alter;
    return stampOf(plan).status;
}

// Changes the first occurrence of the bytes in the token to others of the same length.
std::function<void(Bytes&)> replacing(const Bytes& old, const Bytes& other)
{
    return [old, other](Bytes& token) {
        const auto at = std::search(token.begin(), token.end(), old.begin(), old.end());
        ASSERT_NE(at, token.end());
        std::copy(other.begin(), other.end(), at);
    };
}

} // namespace

TEST(TimeStamp, OfATrustedAuthorityIsAccepted)
{
    EXPECT_EQ(test::answers(signedProgram(stamped())), test::signedAnswers);
}

TEST(TimeStamp, TellsWhenTheSignatureExisted)
{
    const TimeStamp stamp = stampOf(stamped());
    EXPECT_EQ(stamp.status, status::valid);
    EXPECT_EQ(stamp.time, 1685620800);
}

TEST(TimeStamp, IsNoneWithoutAToken)
{
    const Bytes cms = test::makeCms({}, {test::makeDirectory({}, {}, {})});
    const auto message = parseCms(cms);
    EXPECT_FALSE(checkTimeStamp(*message->signer, certificatesOf(*message), test::testAnchor()));
}

TEST(TimeStamp, WhoseRecordLacksAPartIsBroken)
{
    constexpr std::size_t recordParts = 5;
    EXPECT_EQ(statusWithRecord([](auto&) {}), status::valid);
    for (std::size_t missing = 0; missing < recordParts; ++missing)
        EXPECT_EQ(statusWithRecord([missing](std::vector<Bytes>& parts) {
            parts.erase(parts.begin() + static_cast<std::ptrdiff_t>(missing));
        }),
            status::timeStampBroken)
            << missing;
    EXPECT_EQ(statusWithRecord([](std::vector<Bytes>& parts) { parts.clear(); }), status::timeStampBroken);
}

TEST(TimeStamp, WhoseImprintIsIncompleteOrOfAnUnknownHashIsBroken)
{
    const Bytes known = test::elementOf(0x30, {test::objectIdentifier("2.16.840.1.101.3.4.2.1")});
    const Bytes unknown = test::elementOf(0x30, {test::objectIdentifier("1.2.3.4")});
    const Bytes hash = test::element(0x04, Bytes(32, 0x11));
    for (const std::vector<Bytes>& imprint : std::vector<std::vector<Bytes>>{
             {}, {known}, {hash}, {unknown, hash}, {test::element(0x30, {}), hash}})
        EXPECT_EQ(statusWithRecord([&imprint](auto& parts) { parts[2] = test::elementOf(0x30, imprint); }),
            status::timeStampBroken)
            << imprint.size();
}

TEST(TimeStamp, HasATimeOfAtMost64Characters)
{
    const auto withFraction = [](std::size_t digits) {
        return stampOf(stamped("20230601120000." + std::string(digits, '5') + "Z")).status;
    };
    EXPECT_EQ(withFraction(64 - 16), status::valid);
    EXPECT_EQ(withFraction(65 - 16), status::timeStampBroken);
}

TEST(TimeStamp, OfAnotherTypeOfContentIsBroken)
{
    test::CmsPlan plan = stamped();
    plan.stamp->contentType = "1.2.840.113549.1.7.1";
    EXPECT_EQ(stampOf(plan).status, status::timeStampBroken);
}

TEST(TimeStamp, WhoseTokenIsNoSuchMessageIsBroken)
{
    const Bytes type = test::objectIdentifier("1.2.840.113549.1.9.16.1.4");
    const auto messageOf = [](const Bytes& content) {
        const Bytes data = test::elementOf(
            0x30, {{0x02, 0x01, 0x01}, test::elementOf(0x31, {}), content, test::elementOf(0x31, {})});
        return test::elementOf(
            0x30, {test::objectIdentifier("1.2.840.113549.1.7.2"), test::elementOf(0xa0, {data})});
    };
    const Bytes withoutContent = messageOf(test::elementOf(0x30, {type}));
    const Bytes withoutSigner
        = messageOf(test::elementOf(0x30, {type, test::elementOf(0xa0, {test::element(0x04, Bytes{'r'})})}));
    for (const Bytes& other : {test::bytesOf("rubbish"), withoutContent, withoutSigner}) {
        test::CmsPlan plan = stamped();
        plan.stamp->alterToken = [&other](Bytes& token) { token = other; };
        EXPECT_EQ(stampOf(plan).status, status::timeStampBroken);
    }
}

TEST(TimeStamp, WhoseOwnSignatureIsWrongIsBroken)
{
    test::CmsPlan plan = stamped();
    plan.stamp->alterToken = [](Bytes& token) { token.back() ^= 1U; }; // within the signature
    EXPECT_EQ(stampOf(plan).status, status::timeStampBroken);
    plan.stamp->alterToken = replacing(test::bytesOf("20230601120000Z"), test::bytesOf("20230601120001Z"));
    EXPECT_EQ(stampOf(plan).status, status::timeStampBroken) << "of another time than was signed";
}

TEST(TimeStamp, IsNotTrustedThroughWhoeverMayNotIssueCertificates)
{
    test::CertificatePlan plain;
    plain.commonName = "No Authority";
    const test::Identity between = makeIdentity(test::testKey(8), plain, &test::testAuthority().root);
    test::CertificatePlan stamper;
    stamper.commonName = "A Stamper";
    stamper.extendedUsage = "timeStamping";
    test::CmsPlan plan = stamped();
    plan.stamp->stamper = makeIdentity(test::testKey(9), stamper, &between);
    plan.stamp->certificates = {plan.stamp->stamper, between};
    EXPECT_EQ(stampOf(plan).status, status::timeStampNotTrusted);
}

TEST(TimeStamp, DecidesAtWhichTimeCertificatesMustBeValid)
{
    test::CertificatePlan plan;
    plan.commonName = "A Signer";
    plan.extendedUsage = "codeSigning";
    plan.from = "20210101000000Z";
    plan.until = "20220101000000Z";
    const test::Identity signer = makeIdentity(test::testKey(5), plan, &test::testAuthority().root);
    const struct {
        const char* time;
        const char* states;
    } cases[] = {{"20210601000000Z", "2 2"}, {"20210601000000.5Z", "2 2"}, {"20200601000000Z", "6 6"},
        {"20220601000000Z", "6 6"}};
    for (const auto& c : cases) {
        test::CmsPlan cms = stamped(c.time);
        cms.signer = signer;
        cms.certificates = {test::testAuthority().root, test::testAuthority().intermediate, signer};
        test::SignaturePlan signature = signedPlan(cms);
        signature.directories.front().flags = 0x400;
        EXPECT_EQ(test::states(programOf(signature)), c.states) << c.time;
    }
}

TEST(TimeStamp, ThatIsBrokenCannotBeTold)
{
    test::CmsPlan plan = stamped();
    plan.stamp->imprinted = test::bytesOf("something else");
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("6")) << "of something else";
    plan = stamped("no time at all");
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("6")) << "without a time";
    plan = stamped();
    plan.stamp->certificates.clear();
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("6")) << "without the stamper's certificate";
}

TEST(TimeStamp, MustComeFromATimeStampAuthorityBelowTheAnchor)
{
    EXPECT_EQ(stampOf(stamped(), platformRoot()).status, status::timeStampNotTrusted) << "another root";
    test::CmsPlan plan = stamped();
    plan.stamp->stamper = test::testAuthority().signer;
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("6")) << "a code signer's certificate";
    plan = stamped("20450601000000Z");
    EXPECT_EQ(test::answers(signedProgram(plan)), test::unproven("6"))
        << "everybody has expired at that time";

    test::CertificatePlan shortLived;
    shortLived.commonName = "Stamps of 2022";
    shortLived.extendedUsage = "timeStamping";
    shortLived.until = "20230101000000Z";
    const test::Identity stamper = makeIdentity(test::testKey(4), shortLived, &test::testAuthority().root);
    for (const auto& [time, answer] :
        {std::pair(std::string("20220601120000Z"), std::string(test::signedAnswers)),
            {"20230601120000Z", test::unproven("6")}}) {
        plan = stamped(time);
        plan.stamp->stamper = stamper;
        plan.stamp->certificates = {stamper};
        EXPECT_EQ(test::answers(signedProgram(plan)), answer) << "the stamper's certificate at " << time;
    }
}

} // namespace quorvane::codesign
