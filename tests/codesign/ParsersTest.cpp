#include "codesign/Ber.h"
#include "codesign/InfoPlist.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

namespace quorvane::codesign {

TEST(ByteView, ReadsNumbersInBothOrdersAndZeroOutside)
{
    const Bytes bytes{1, 2, 3, 4, 5, 6, 7, 8};
    const ByteView view(bytes);
    EXPECT_EQ(view.u32(0), 0x01020304U);
    EXPECT_EQ(view.u32(4, ByteOrder::little), 0x08070605U);
    EXPECT_EQ(view.u64(0), 0x0102030405060708U);
    EXPECT_EQ(view.u8(7), 8);
    for (const std::uint64_t offset : {std::uint64_t{5}, std::uint64_t{8}, UINT64_MAX, UINT64_MAX - 3}) {
        EXPECT_EQ(view.u32(offset), 0U) << offset;
        EXPECT_FALSE(view.holds(offset, 4)) << offset;
    }
    EXPECT_FALSE(view.part(4, UINT64_MAX - 2)) << "a sum that wraps around";
    EXPECT_TRUE(view.part(8, 0));
    EXPECT_FALSE(view.part(9, 0));
}

TEST(ByteView, FindsTextsThatEndInsideOnly)
{
    const Bytes bytes = test::bytesOf(std::string("ab\0cd", 5));
    EXPECT_EQ(ByteView(bytes).zeroTerminated(0), "ab");
    EXPECT_EQ(ByteView(bytes).zeroTerminated(2), "");
    EXPECT_FALSE(ByteView(bytes).zeroTerminated(3));
    EXPECT_FALSE(ByteView(bytes).zeroTerminated(UINT64_MAX));
}

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

TEST(InfoPlist, OfABinaryListThatIsDamagedOrRefersToItselfIsHarmless)
{
    Bytes list = test::bytesOf("bplist00");
    test::append(list, Bytes{0xd1, 0, 0}); // a dictionary whose key and value are itself
    list.push_back(8);
    Bytes trailer(32);
    trailer[6] = trailer[7] = 1;
    trailer[15] = 1;
    trailer[31] = 11;
    test::append(list, trailer);
    EXPECT_FALSE(parseInfoPlist(list));

    for (std::size_t at = 8; at < list.size(); ++at) {
        for (const std::uint8_t value : std::initializer_list<std::uint8_t>{0xff, 0xdf, 0x5f, 0x80, 0}) {
            Bytes damaged = list;
            damaged[at] = value;
            const auto answer = parseInfoPlist(damaged);
            EXPECT_FALSE(answer && answer->executable) << at;
        }
        const Bytes cut(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_FALSE(parseInfoPlist(cut)) << at;
    }
}

} // namespace quorvane::codesign
