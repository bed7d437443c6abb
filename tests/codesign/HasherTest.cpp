#include "codesign/Hasher.h"

#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvane::codesign {

namespace {

const Bytes abc = test::bytesOf("abc");

// The first eight digits and the number of all digits.
std::string shown(const HashValue& hash)
{
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    for (std::size_t at = 0; at < 4; ++at) {
        text += digits[hash.bytes[at] >> 4U];
        text += digits[hash.bytes[at] & 0xFU];
    }
    return text + " of " + std::to_string(2 * hash.length);
}

} // namespace

// The values are the examples of FIPS 180.
TEST(Hasher, ComputesWhatEachStandardSays)
{
    EXPECT_EQ(shown(hashOf(HashAlgorithm::sha1, abc)), "a9993e36 of 40");
    EXPECT_EQ(shown(hashOf(HashAlgorithm::sha256, abc)), "ba7816bf of 64");
    EXPECT_EQ(shown(hashOf(HashAlgorithm::sha384, abc)), "cb00753f of 96");
    EXPECT_EQ(shown(hashOf(HashAlgorithm::sha512, abc)), "ddaf35a1 of 128");
    EXPECT_EQ(shown(hashOf(HashAlgorithm::sha1, Bytes())), "da39a3ee of 40");
}

TEST(Hasher, HashesOneMessageAfterAnotherHoweverTheyArrive)
{
    Hasher hasher(HashAlgorithm::sha256);
    EXPECT_EQ(hasher.finish().view(), hashOf(HashAlgorithm::sha256, Bytes()).view());
    for (int message = 0; message < 2; ++message) {
        for (const std::uint8_t byte : abc)
            hasher.update(Bytes{byte});
        EXPECT_EQ(hasher.finish().view(), hashOf(HashAlgorithm::sha256, abc).view());
    }
}

TEST(HashValue, IsMatchedByItsBeginningAndByNothingElse)
{
    const HashValue hash = hashOf(HashAlgorithm::sha256, abc);
    const Bytes whole(hash.view().begin(), hash.view().end());
    for (std::size_t length = 1; length <= whole.size(); ++length) {
        Bytes stored(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_TRUE(hash.startsWith(stored)) << length;
        stored.back() ^= 1U;
        EXPECT_FALSE(hash.startsWith(stored)) << length;
    }
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_FALSE(hash.startsWith(longer));
    EXPECT_FALSE(hash.startsWith(Bytes())) << "no stored hash proves nothing";
}

TEST(HashValue, ThatCouldNotBeComputedEqualsNoStoredHash)
{
    EXPECT_FALSE(HashValue().startsWith(Bytes(20)));
    EXPECT_FALSE(HashValue().startsWith(Bytes()));
}

} // namespace quorvane::codesign
