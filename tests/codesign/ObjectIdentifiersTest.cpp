#include "codesign/ObjectIdentifiers.h"

#include "tests/support/CmsBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quorvane::codesign {

namespace {

// The content octets of an identifier in dot notation.
Bytes identifier(const std::string& dots)
{
    const Bytes element = test::objectIdentifier(dots);
    return {element.begin() + 2, element.end()};
}

} // namespace

TEST(ObjectIdentifiers, NameTheHashesThatSignaturesUse)
{
    EXPECT_EQ(hashAlgorithmOf(identifier("1.3.14.3.2.26")), HashAlgorithm::sha1);
    EXPECT_EQ(hashAlgorithmOf(identifier("2.16.840.1.101.3.4.2.1")), HashAlgorithm::sha256);
    EXPECT_EQ(hashAlgorithmOf(identifier("2.16.840.1.101.3.4.2.2")), HashAlgorithm::sha384);
    EXPECT_EQ(hashAlgorithmOf(identifier("2.16.840.1.101.3.4.2.3")), HashAlgorithm::sha512);
    EXPECT_EQ(hashAlgorithmOf(identifier("2.16.840.1.101.3.4.2.4")), std::nullopt) << "SHA-224";
    EXPECT_EQ(hashAlgorithmOf(Bytes()), std::nullopt);
}

TEST(ObjectIdentifiers, NameTheKindOfKeyWithAndWithoutAHash)
{
    for (const char* rsa : {"1.2.840.113549.1.1.1", "1.2.840.113549.1.1.5", "1.2.840.113549.1.1.11",
             "1.2.840.113549.1.1.12", "1.2.840.113549.1.1.13"})
        EXPECT_EQ(keyKindOf(identifier(rsa)), KeyKind::rsa) << rsa;
    for (const char* curve : {"1.2.840.10045.2.1", "1.2.840.10045.4.1", "1.2.840.10045.4.3.2",
             "1.2.840.10045.4.3.3", "1.2.840.10045.4.3.4"})
        EXPECT_EQ(keyKindOf(identifier(curve)), KeyKind::ellipticCurve) << curve;
    for (const char* other : {"1.2.840.113549.1.1.4", "1.2.840.10040.4.1", "1.3.101.112"})
        EXPECT_EQ(keyKindOf(identifier(other)), std::nullopt) << other;
}

TEST(ObjectIdentifiers, AreThoseOfTheirNames)
{
    const std::pair<std::string_view, const char*> names[]
        = {{oid::data, "1.2.840.113549.1.7.1"}, {oid::signedData, "1.2.840.113549.1.7.2"},
            {oid::messageDigest, "1.2.840.113549.1.9.4"}, {oid::timeStampToken, "1.2.840.113549.1.9.16.2.14"},
            {oid::timeStampInfo, "1.2.840.113549.1.9.16.1.4"}, {oid::hashListPlist, "1.2.840.113635.100.9.1"},
            {oid::hashListSet, "1.2.840.113635.100.9.2"}};
    for (const auto& [octets, dots] : names)
        EXPECT_EQ(octets, ByteView(identifier(dots)).text()) << dots;
}

} // namespace quorvane::codesign
