#include "codesign/SignatureContainer.h"

#include "tests/support/ByteWriter.h"
#include "tests/support/SignatureBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::codesign {

namespace {

constexpr std::size_t indexEntry = 12; // the first one

const Bytes empty = test::makeBlob(0xfade0b01, {});

// A container of two blobs without contents, in the slots 5 and 6, after a change of a number.
std::optional<SignatureContainer> changed(std::size_t offset, std::uint32_t value)
{
    Bytes bytes = test::makeContainer({{5, empty}, {6, empty}});
    test::putBig32(bytes, offset, value);
    return SignatureContainer::parse(bytes);
}

} // namespace

TEST(SignatureContainer, HoldsBlobsThatLieBehindItsIndexAndBeforeItsEnd)
{
    constexpr std::uint32_t indexEnd = 12 + 2 * 8;
    constexpr std::uint32_t length = indexEnd + 2 * 8;
    const auto sound = SignatureContainer::parse(test::makeContainer({{5, empty}, {6, empty}}));
    ASSERT_TRUE(sound);
    EXPECT_EQ(sound->size(), length);
    EXPECT_EQ(sound->blob(5)->size(), 8U);
    EXPECT_EQ(sound->blob(6)->size(), 8U) << "it ends where the container does";
    EXPECT_FALSE(sound->blob(7));

    EXPECT_FALSE(changed(indexEntry + 4, indexEnd - 1));
    EXPECT_FALSE(changed(indexEntry + 4, length - 7)) << "no room for a header";
    EXPECT_FALSE(changed(indexEnd + 4, 7)) << "shorter than a header";
    EXPECT_TRUE(changed(indexEnd + 4, 16)) << "over the other one, up to the end";
    EXPECT_FALSE(changed(indexEnd + 4, 17));
    EXPECT_FALSE(changed(4, length + 1));
    EXPECT_FALSE(changed(4, length - 1)) << "the second blob ends later";
}

TEST(SignatureContainer, PassesOverEntriesThatPointNowhere)
{
    const auto container = changed(indexEntry + 4, 0);
    ASSERT_TRUE(container);
    EXPECT_FALSE(container->blob(5));
    EXPECT_TRUE(container->blob(6));
}

TEST(SignatureContainer, HasAThousandAndTwentyFourBlobsAtMost)
{
    const auto ofBlobs = [](std::size_t count) {
        return SignatureContainer::parse(
            test::makeContainer(std::vector<std::pair<std::uint32_t, Bytes>>(count, {5, empty})));
    };
    EXPECT_TRUE(ofBlobs(1024));
    EXPECT_FALSE(ofBlobs(1025));
    EXPECT_TRUE(ofBlobs(0));
}

TEST(SignatureContainer, IsReadWithinItsRoomUpTo32MiB)
{
    const test::TemporaryFolder folder;
    constexpr std::uint32_t largest = 32U << 20U;
    const auto ofLength = [&](std::uint32_t length, std::uint64_t room) {
        Bytes header = test::makeContainer({});
        test::putBig32(header, 4, length);
        const std::string path = folder.write("file", header);
        std::filesystem::resize_file(path, largest + 10);
        return SignatureContainer::read(*CodeFile::open(path), 0, room);
    };
    EXPECT_TRUE(ofLength(largest, largest));
    EXPECT_FALSE(ofLength(largest, largest - 1));
    EXPECT_FALSE(ofLength(largest + 1, largest + 1));
    EXPECT_FALSE(ofLength(11, 11)) << "shorter than its header";
}

} // namespace quorvane::codesign
