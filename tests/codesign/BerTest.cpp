#include "codesign/Ber.h"

#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

namespace quorvane::codesign {

TEST(BerReader, RefusesLengthsThatTheBytesDoNotHold)
{
    for (const Bytes& bytes : std::initializer_list<Bytes>{{}, {0x30}, {0x30, 1}, {0x30, 0x81},
             {0x30, 0x84, 0xff, 0xff, 0xff, 0xff},
             {0x30, 0x88, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff},
             {0x30, 0x89, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {0x30, 0x80}, {0x30, 0x80, 0}, {0x04, 0x80, 0, 0},
             {0x3f, 0x81, 0x01, 0}, {0x30, 0x80, 0x04, 0x05, 0, 0}})
        EXPECT_FALSE(BerReader(bytes).next());
}

TEST(BerReader, ReadsIndefiniteLengthsWithinEachOtherUpToABound)
{
    const auto nested = [](int depth) {
        Bytes bytes;
        for (int i = 0; i < depth; ++i)
            test::append(bytes, Bytes{0x30, 0x80});
        bytes.resize(bytes.size() + static_cast<std::size_t>(depth) * 2);
        return bytes;
    };
    const Bytes sound = nested(48);
    const auto element = BerReader(sound).next();
    ASSERT_TRUE(element);
    EXPECT_EQ(element->whole.size(), sound.size());
    EXPECT_EQ(element->content.size(), sound.size() - 4);
    EXPECT_FALSE(BerReader(nested(49)).next());
    EXPECT_FALSE(BerReader(nested(100000)).next());
}

TEST(BerReader, JoinsOctetStringsInPieces)
{
    const Bytes pieces{0x24, 0x80, 0x04, 1, 'a', 0x04, 2, 'b', 'c', 0, 0};
    EXPECT_EQ(octets(*BerReader(pieces).next()), test::bytesOf("abc"));
    const Bytes other{0x24, 3, 0x02, 1, 'a'};
    EXPECT_FALSE(octets(*BerReader(other).next()));
}

} // namespace quorvane::codesign
