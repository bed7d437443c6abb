#include "codesign/CmsMessage.h"

#include "codesign/ObjectIdentifiers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/CmsBuilder.h"

#include <gtest/gtest.h>

#include <vector>

namespace quorvane::codesign {

namespace {

const Bytes anyNumber{0x02, 0x01, 0x01};
const Bytes noContent = test::elementOf(0x30, {test::objectIdentifier("1.2.840.113549.1.7.1")});
const Bytes noCertificates = test::element(0xa0, Bytes());
const Bytes digestName = test::elementOf(0x30, {test::objectIdentifier("2.16.840.1.101.3.4.2.1")});
const Bytes rsaName = test::elementOf(0x30, {test::objectIdentifier("1.2.840.113549.1.1.1")});

// A signer who is identified by a key.
Bytes signerOf(const std::vector<Bytes>& behindTheName)
{
    std::vector<Bytes> parts{anyNumber, test::element(0x80, Bytes{7, 8})};
    parts.insert(parts.end(), behindTheName.begin(), behindTheName.end());
    return test::elementOf(0x30, parts);
}

Bytes usualSigner(std::uint8_t signature = 's')
{
    return signerOf({digestName, rsaName, test::element(0x04, Bytes{signature})});
}

// A message of signed data with these parts behind its version.
Bytes messageOf(const std::vector<Bytes>& behindTheVersion, const char* type = "1.2.840.113549.1.7.2")
{
    std::vector<Bytes> parts{anyNumber};
    parts.insert(parts.end(), behindTheVersion.begin(), behindTheVersion.end());
    return test::elementOf(
        0x30, {test::objectIdentifier(type), test::elementOf(0xa0, {test::elementOf(0x30, parts)})});
}

Bytes messageWithSigners(const std::vector<Bytes>& signers)
{
    return messageOf(
        {test::elementOf(0x31, {digestName}), noContent, noCertificates, test::elementOf(0x31, signers)});
}

Bytes messageWithContent(const Bytes& content)
{
    return messageOf(
        {test::elementOf(0x31, {digestName}), content, noCertificates, test::elementOf(0x31, {})});
}

Bytes messageWithCertificates(std::size_t count)
{
    return messageOf({test::elementOf(0x31, {digestName}), noContent,
        test::elementOf(0xa0, std::vector<Bytes>(count, test::elementOf(0x30, {anyNumber}))),
        test::elementOf(0x31, {})});
}

} // namespace

TEST(CmsMessage, HasTheFirstOfItsSigners)
{
    const Bytes bytes = messageWithSigners({usualSigner('a'), usualSigner('b')});
    const auto message = parseCms(bytes);
    ASSERT_TRUE(message);
    ASSERT_TRUE(message->signer);
    EXPECT_EQ(message->signer->signature.text(), "a");
    EXPECT_EQ(message->signer->keyIdentifier.text(), "\x07\x08");
    EXPECT_EQ(message->signer->hash, HashAlgorithm::sha256);
    EXPECT_EQ(message->signer->keyKind, KeyKind::rsa);
    EXPECT_FALSE(message->signer->signedAttributes);
}

TEST(CmsMessage, OfNoSignersHasNone)
{
    const Bytes bytes = messageWithSigners({});
    const auto message = parseCms(bytes);
    ASSERT_TRUE(message);
    EXPECT_FALSE(message->signer);
}

TEST(CmsMessage, WithoutItsSetOfSignersIsNone)
{
    EXPECT_FALSE(parseCms(messageOf({test::elementOf(0x31, {digestName}), noContent, noCertificates})));
    EXPECT_FALSE(parseCms(messageOf({test::elementOf(0x31, {digestName}), noContent})));
}

TEST(CmsMessage, WithoutADescriptionOfItsContentIsNone)
{
    EXPECT_FALSE(parseCms(
        messageOf({test::elementOf(0x31, {digestName}), noCertificates, test::elementOf(0x31, {})})));
    EXPECT_FALSE(parseCms(messageOf({test::elementOf(0x31, {digestName})})));
}

TEST(CmsMessage, WithCertificatesThatAreCutOffIsNone)
{
    EXPECT_FALSE(parseCms(messageOf({test::elementOf(0x31, {digestName}), noContent,
        test::element(0xa0, Bytes{0x30, 0x20, 0x01}), test::elementOf(0x31, {})})));
}

TEST(CmsMessage, WhoseFirstSignerLacksAPartIsNone)
{
    const Bytes signature = test::element(0x04, Bytes{'s'});
    ASSERT_TRUE(parseCms(messageWithSigners({usualSigner()})));
    for (const Bytes& signer : {signerOf({}), signerOf({digestName}), signerOf({digestName, rsaName}),
             signerOf({digestName, signature}), signerOf({test::element(0x30, Bytes()), rsaName, signature}),
             test::elementOf(0x30, {anyNumber, digestName}), test::elementOf(0x30, {digestName}), anyNumber,
             test::elementOf(0x30, {anyNumber, anyNumber, digestName, rsaName, signature}),
             test::elementOf(
                 0x30, {anyNumber, test::elementOf(0x30, {digestName}), digestName, rsaName, signature}),
             test::elementOf(
                 0x30, {anyNumber, test::elementOf(0x30, {anyNumber}), digestName, rsaName, signature})})
        EXPECT_FALSE(parseCms(messageWithSigners({signer, usualSigner()})));
}

TEST(CmsMessage, OfAnUnknownHashOrKeyIsReadAllTheSame)
{
    const Bytes unknown = test::elementOf(0x30, {test::objectIdentifier("1.2.3.4")});
    const Bytes bytes = messageWithSigners({signerOf({unknown, unknown, test::element(0x04, Bytes{'s'})})});
    const auto message = parseCms(bytes);
    ASSERT_TRUE(message && message->signer);
    EXPECT_FALSE(message->signer->hash);
    EXPECT_FALSE(message->signer->keyKind);
}

TEST(CmsMessage, AnswersTheValuesOfAnAttributeByItsName)
{
    const Bytes digest = test::attribute("1.2.840.113549.1.9.4", {test::element(0x04, Bytes{'d'})});
    const Bytes other = test::attribute("1.2.3", {anyNumber});
    const Bytes bytes = messageWithSigners({signerOf(
        {digestName, test::elementOf(0xa0, {other, digest}), rsaName, test::element(0x04, Bytes{'s'}),
            test::elementOf(0xa1, {test::attribute("1.2.3.4", {anyNumber})})})});
    const auto message = parseCms(bytes);
    ASSERT_TRUE(message && message->signer);
    EXPECT_EQ(message->signer->signedAttribute(oid::messageDigest)->text(),
        "\x04\x01"
        "d");
    EXPECT_FALSE(message->signer->signedAttribute(oid::hashListSet));
    EXPECT_FALSE(message->signer->unsignedAttribute(oid::messageDigest)) << "it is among the signed ones";
    EXPECT_TRUE(message->signer->unsignedAttribute("\x2a\x03\x04"));
}

TEST(CmsMessage, ContainsItsContentUnlessThatIsDetached)
{
    const Bytes type = test::objectIdentifier("1.2.840.113549.1.7.1");
    const auto contentOf = [](const Bytes& info) {
        const Bytes bytes = messageWithContent(info);
        const auto message = parseCms(bytes);
        return message ? message->content : Bytes{'-'};
    };
    EXPECT_EQ(contentOf(noContent), std::nullopt);
    const Bytes text = test::element(0x04, Bytes{'h', 'i'});
    EXPECT_EQ(contentOf(test::elementOf(0x30, {type, test::elementOf(0xa0, {text})})), (Bytes{'h', 'i'}));
    EXPECT_EQ(contentOf(test::elementOf(0x30, {type, test::elementOf(0xa0, {anyNumber})})), Bytes{'-'})
        << "content that is no octets";
    EXPECT_EQ(contentOf(test::elementOf(0x30, {type, text})), Bytes{'-'}) << "content without its tag";
    EXPECT_EQ(contentOf(test::elementOf(0x30, {anyNumber})), Bytes{'-'}) << "no type";
}

TEST(CmsMessage, HoldsAHundredCertificatesAndNoMore)
{
    const Bytes hundred = messageWithCertificates(100);
    const auto message = parseCms(hundred);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->certificates.size(), 100U);
    EXPECT_FALSE(parseCms(messageWithCertificates(101)));
}

TEST(CmsMessage, PassesOverRevocationListsAndOtherFormsOfCertificates)
{
    const Bytes bytes = messageOf({test::elementOf(0x31, {digestName}), noContent,
        test::elementOf(0xa0, {test::element(0xa1, Bytes{1}), test::elementOf(0x30, {anyNumber})}),
        test::element(0xa1, Bytes{1, 2, 3}), test::elementOf(0x31, {usualSigner()})});
    const auto message = parseCms(bytes);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->certificates.size(), 1U);
    EXPECT_TRUE(message->signer);
}

TEST(CmsMessage, OfAnotherTypeOrMoreThanAMebibyteIsNone)
{
    EXPECT_FALSE(parseCms(messageOf({}, "1.2.840.113549.1.7.1")));
    EXPECT_FALSE(parseCms(Bytes()));
    Bytes bytes = messageWithSigners({usualSigner()});
    bytes.resize(1U << 20U);
    EXPECT_TRUE(parseCms(bytes)) << "bytes behind the message are no part of it";
    bytes.push_back(0);
    EXPECT_FALSE(parseCms(bytes));
}

} // namespace quorvane::codesign
