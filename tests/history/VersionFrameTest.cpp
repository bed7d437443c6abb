#include "history/VersionFrame.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

namespace quorvane::history {

TEST(VersionFrame, UnpacksToWhatWasPacked)
{
    const std::string texts[] = {"", "a", test::textOfLines(3000, 1, "w"), std::string(300000, 'x')};
    for (const std::string& prefix : texts)
        for (const std::string& text : texts)
            EXPECT_EQ(unpackedFrame(packedFrame(text, prefix), prefix, text.size()), text)
                << prefix.size() << " " << text.size();
}

TEST(VersionFrame, IsSmallForOneChangeInALongText)
{
    const std::string before = test::textOfLines(100000, 5, "w");
    const std::string after = test::textOfLines(100000, 60000, "changed");

    EXPECT_LE(packedFrame(after, before).size(), after.size() / 1000);
}

// In a file with one changed line, the common ends are nearly everything.
TEST(VersionFrame, HoldsOnlyWhatIsNotAtBothEndsOfItsPrefix)
{
    const std::string before = test::textOfLines(1000, 5, "w");
    const std::string after = test::textOfLines(1000, 600, "changed");
    for (const auto& [prefix, text] : {std::pair(before, before), {before, before + "new"},
             {before, "new" + before}, {before, before.substr(0, 9000)}, {before, before.substr(9000)},
             {before + "old", before}, {std::string(9000, 'x'), std::string(10000, 'x')},
             {std::string(10000, 'x'), std::string(9000, 'x')}}) {
        const std::string frame = packedFrame(text, prefix);
        EXPECT_LT(frame.size(), 60U);
        EXPECT_EQ(unpackedFrame(frame, prefix, text.size()), text);
    }
    EXPECT_EQ(unpackedFrame(packedFrame(after, before), before, after.size()), after);
}

TEST(VersionFrame, MayBeginWithLengthsThatNoPrefixHas)
{
    const std::string prefix = test::textOfLines(100, 5, "w");
    const std::string text = test::textOfLines(100, 6, "w");
    const std::string frame = packedFrame(text, prefix);

    for (const std::size_t length : {8U, 16U}) {
        for (const char byte : {'\x7F', '\xFF'}) {
            std::string damaged = frame;
            damaged.replace(length, 8, 8, byte);
            EXPECT_FALSE(unpackedFrame(damaged, prefix, text.size())) << length;
        }
    }
}

TEST(VersionFrame, IsRefusedAgainstAnotherPrefixOrSize)
{
    const std::string prefix = test::textOfLines(1000, 5, "w");
    const std::string text = test::textOfLines(1000, 6, "w");
    const std::string frame = packedFrame(text, prefix);

    EXPECT_NE(unpackedFrame(frame, test::textOfLines(1000, 7, "other"), text.size()), text)
        << "told by its digest";
    EXPECT_FALSE(unpackedFrame(frame, {}, text.size()));
    EXPECT_FALSE(unpackedFrame(frame, prefix, text.size() + 1));
    EXPECT_FALSE(unpackedFrame(frame, prefix, 0));
    EXPECT_FALSE(unpackedFrame({}, prefix, 0));
}

TEST(VersionFrame, IsRefusedWhenAnyOfItsBytesIsDamaged)
{
    const std::string prefix = test::textOfLines(100, 5, "w");
    const std::string text = test::textOfLines(100, 6, "changed") + "more";
    const std::string frame = packedFrame(text, prefix);
    for (std::size_t at = 0; at < frame.size(); ++at) {
        std::string damaged = frame;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x10);
        const auto unpacked = unpackedFrame(damaged, prefix, text.size());
        EXPECT_TRUE(!unpacked || *unpacked == text) << at << ": a bit that means nothing, at most";
    }
    for (std::size_t length = 0; length < frame.size(); ++length)
        EXPECT_FALSE(unpackedFrame(frame.substr(0, length), prefix, text.size())) << length;
}

} // namespace quorvane::history
