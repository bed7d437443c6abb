#include "codesign/ByteView.h"

#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

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

} // namespace quorvane::codesign
