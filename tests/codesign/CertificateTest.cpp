#include "codesign/Certificate.h"

#include "codesign/CertificateChain.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/CmsBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <openssl/x509v3.h>

namespace quorvane::codesign {

namespace {

Certificate parsed(const Bytes& encoded)
{
    return Certificate::parse(encoded).value();
}

Certificate parsed(const test::Identity& identity)
{
    return parsed(identity.encoded());
}

test::CertificatePlan named(const std::string& name)
{
    test::CertificatePlan plan;
    plan.commonName = name;
    plan.authority = true;
    return plan;
}

// The encoding with the first occurrence of a text replaced by one of the same length.
Bytes with(Bytes encoded, const std::string& old, const std::string& other)
{
    const auto at = std::search(encoded.begin(), encoded.end(), old.begin(), old.end());
    EXPECT_NE(at, encoded.end()) << old;
    std::copy(other.begin(), other.end(), at);
    return encoded;
}

} // namespace

TEST(Certificate, IsNoneBeyond64KiB)
{
    const auto padded = [](std::size_t padding) {
        test::CertificatePlan plan = named("Large");
        plan.padding = padding;
        return makeIdentity(test::testKey(1), plan).encoded();
    };
    constexpr std::size_t roughly = 60000;
    const std::size_t largest = (64U << 10U) - (padded(roughly).size() - roughly);
    ASSERT_EQ(padded(largest).size(), 64U << 10U);
    EXPECT_TRUE(Certificate::parse(padded(largest)));
    EXPECT_FALSE(Certificate::parse(padded(largest + 1)));
}

TEST(Certificate, IsValidFromItsFirstToItsLastSecond)
{
    test::CertificatePlan plan = named("Of a day");
    plan.from = "20200102000000Z";
    plan.until = "20200103000000Z";
    const Certificate certificate = parsed(makeIdentity(test::testKey(1), plan));
    constexpr std::time_t first = 1577923200;
    constexpr std::time_t last = first + 86400;
    EXPECT_FALSE(certificate.isValidAt(first - 1));
    EXPECT_TRUE(certificate.isValidAt(first));
    EXPECT_TRUE(certificate.isValidAt(last));
    EXPECT_FALSE(certificate.isValidAt(last + 1));
}

TEST(Certificate, WhoseTimesCannotBeReadIsNeverValid)
{
    const Bytes sound = makeIdentity(test::testKey(1), named("Timeless")).encoded();
    constexpr std::time_t between = 1600000000;
    ASSERT_TRUE(parsed(sound).isValidAt(between));
    EXPECT_FALSE(parsed(with(sound, "200101000000Z", "2001010000xxZ")).isValidAt(between));
    EXPECT_FALSE(parsed(with(sound, "400101000000Z", "4001010000xxZ")).isValidAt(between));
}

TEST(Certificate, IsIssuedByWhomItNamesWithAKeyThatIsUsed)
{
    const test::Identity root = makeIdentity(test::testKey(1), named("Root"));
    const test::Identity other = makeIdentity(test::testKey(1), named("Other name, same key"));
    const Certificate leaf = parsed(makeIdentity(test::testKey(2), named("Leaf"), &root));
    EXPECT_TRUE(leaf.isIssuedBy(parsed(root)));
    EXPECT_FALSE(leaf.isIssuedBy(parsed(other)));
    EXPECT_TRUE(parsed(root).isSelfSigned());
    EXPECT_FALSE(parsed(makeIdentity(test::testKey(1), named("Leaf"), &root)).isSelfSigned())
        << "signed by its own key under another name";

    const test::Identity shortCurve = makeIdentity(test::testCurveKey("P-224"), named("Root"));
    EXPECT_FALSE(
        parsed(makeIdentity(test::testKey(2), named("Leaf"), &shortCurve)).isIssuedBy(parsed(shortCurve)));
}

TEST(Certificate, OfAnAuthorityWithAnExtensionThatCannotBeReadIsNone)
{
    const test::Identity identity = makeIdentity(test::testKey(1), named("Authority"));
    ASSERT_TRUE(parsed(identity).isAuthority());
    X509* x = identity.certificate.get();
    X509_EXTENSION* usage = X509V3_EXT_conf_nid(nullptr, nullptr, NID_key_usage, "keyCertSign");
    ASN1_OCTET_STRING_set(X509_EXTENSION_get_data(usage), reinterpret_cast<const unsigned char*>("\x05"), 1);
    X509_add_ext(x, usage, -1);
    X509_EXTENSION_free(usage);
    X509_sign(x, identity.key.get(), EVP_sha256());
    EXPECT_FALSE(parsed(identity).isAuthority());
}

TEST(Certificate, WithoutANameThatCanBeShownIsDescribedByTheNextOne)
{
    test::CertificatePlan plan = named("Common");
    plan.organizationalUnit = "Unit";
    const Bytes sound = makeIdentity(test::testKey(1), plan, nullptr).encoded();
    // The name stands there twice: as the issuer's, then as the subject's.
    const Bytes bits = with(with(sound, "Common", "Issuer"),
        "\x0c\x06"
        "Common",
        std::string("\x03\x06\0ommon", 8));
    EXPECT_EQ(parsed(sound).commonName(), "Common");
    EXPECT_EQ(parsed(bits).commonName(), std::nullopt);
    EXPECT_EQ(parsed(bits).longDescription(), "Unit");

    test::CertificatePlan nameless;
    EXPECT_EQ(parsed(makeIdentity(test::testKey(1), nameless)).longDescription(), std::nullopt);
}

TEST(CertificateName, IsNoneWhenAPartIsMalformedOrBeyond64KiB)
{
    constexpr std::size_t largest = 64U << 10U;
    constexpr std::size_t header = 5; // of the builder's long elements
    const auto issuer = [](std::size_t size) {
        const Bytes text = test::element(0x0c, Bytes(size - 4 * header - 5, 'x'));
        const Bytes part = test::elementOf(0x30, {test::objectIdentifier("2.5.4.3"), text});
        return test::elementOf(0x30, {test::elementOf(0x31, {part})});
    };
    const auto serial = [](std::size_t size) { return test::element(0x02, Bytes(size - header, 1)); };
    ASSERT_EQ(issuer(largest).size(), largest);
    ASSERT_EQ(serial(largest).size(), largest);
    EXPECT_TRUE(CertificateName::parse(issuer(largest), serial(largest)));
    EXPECT_FALSE(CertificateName::parse(issuer(largest + 1), serial(largest)));
    EXPECT_FALSE(CertificateName::parse(issuer(largest), serial(largest + 1)));
    EXPECT_FALSE(CertificateName::parse(test::element(0x04, Bytes{1}), serial(100)));
    EXPECT_FALSE(CertificateName::parse(issuer(1000), test::element(0x04, Bytes{1})));
}

TEST(CertificateChain, HasTenCertificatesAtMostToItsRoot)
{
    for (const std::size_t length : {10U, 11U}) {
        std::vector<test::Identity> made{makeIdentity(test::testKey(1), named("Root"))};
        while (made.size() < length)
            made.push_back(
                makeIdentity(test::testKey(2), named("Number " + std::to_string(made.size())), &made.back()));
        std::vector<Certificate> certificates;
        for (const test::Identity& one : made)
            certificates.push_back(parsed(one));
        const CertificateChain chain = buildChain(certificates.back(), certificates);
        EXPECT_EQ(chain.certificates.size(), length);
        EXPECT_EQ(chain.endsSelfSigned, length == 10);
    }
}

TEST(CertificateChain, AsksNoAuthorityOfItsFirstAndItsLast)
{
    test::CertificatePlan plain;
    plain.commonName = "Plain";
    const test::Identity root = makeIdentity(test::testKey(1), plain);
    const test::Identity between = makeIdentity(test::testKey(2), named("Authority"), &root);
    const test::Identity leaf = makeIdentity(test::testKey(3), plain, &between);
    const CertificateChain chain = buildChain(parsed(leaf), {parsed(between), parsed(root)});
    EXPECT_EQ(chain.certificates.size(), 3U);
    EXPECT_TRUE(chain.issuersAreAuthorities());
}

} // namespace quorvane::codesign
