#include "platform/BinaryListShape.h"
#include "platform/PropertyList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <plist/plist.h>

namespace quorvane {

namespace {

void appendNumber(std::string& bytes, std::uint64_t number, int width)
{
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
}

// A binary list whose values are these bytes; the first one is the root.
std::string binaryList(const std::vector<std::string>& values, std::uint64_t countedValues = 0)
{
    std::string bytes = "bplist00";
    std::vector<std::size_t> places;
    for (const std::string& value : values) {
        places.push_back(bytes.size());
        bytes += value;
    }
    const std::size_t table = bytes.size();
    for (const std::size_t place : places)
        appendNumber(bytes, place, 2);
    bytes.append(6, '\0');
    bytes.push_back(2); // bytes of an offset
    bytes.push_back(1); // bytes of a reference
    appendNumber(bytes, countedValues == 0 ? values.size() : countedValues, 8);
    appendNumber(bytes, 0, 8);
    appendNumber(bytes, table, 8);
    return bytes;
}

// An array of up to 14 references.
std::string arrayOf(const std::string& references)
{
    return static_cast<char>(0xA0 + references.size()) + references;
}

} // namespace

TEST(BinaryListShape, AListThatDoublesWithEveryLevelIsRefused)
{
    // given arrays that each hold the next one twice, forty levels deep
    std::vector<std::string> values;
    for (char level = 1; level < 40; ++level)
        values.push_back(arrayOf(std::string(2, level)));
    values.push_back("\x08");
    const std::string bytes = binaryList(values);

    // then it is neither found safe nor read, which would take all memory
    EXPECT_FALSE(unfoldsWithinBounds(bytes));
    EXPECT_FALSE(PropertyList::parse(bytes));
}

TEST(BinaryListShape, AListThatContainsItselfIsRefused)
{
    EXPECT_FALSE(unfoldsWithinBounds(binaryList({arrayOf(std::string(1, '\0'))})));
    EXPECT_FALSE(unfoldsWithinBounds(binaryList({arrayOf("\1"), arrayOf("\2"), arrayOf("\1")})));
}

TEST(BinaryListShape, AListOfManyReferencesToOneLongTextIsRefused)
{
    // given a text of 60,000 bytes and, in one array, 200 references to it
    std::string array("\xAF\x11\x00\xC8", 4);
    array.append(200, '\1');
    std::string text("\x5F\x11\xEA\x60", 4);
    text.append(60000, 'x');
    std::string bytes = "bplist00" + array + text;
    const std::size_t table = bytes.size();
    appendNumber(bytes, 8, 2);
    appendNumber(bytes, 8 + array.size(), 2);
    bytes.append(6, '\0').append("\2\1", 2);
    appendNumber(bytes, 2, 8);
    appendNumber(bytes, 0, 8);
    appendNumber(bytes, table, 8);
    EXPECT_FALSE(unfoldsWithinBounds(bytes));
}

TEST(BinaryListShape, AListThatNestsTooDeepIsRefused)
{
    std::vector<std::string> values;
    for (int level = 1; level < 250; ++level)
        values.push_back(arrayOf(std::string(1, static_cast<char>(level))));
    values.push_back("\x08");
    EXPECT_TRUE(unfoldsWithinBounds(binaryList(values)));

    std::string bytes = "bplist00";
    for (int level = 1; level <= 600; ++level) {
        bytes.push_back('\xA1');
        appendNumber(bytes, static_cast<std::uint64_t>(level), 2);
    }
    bytes.push_back('\x08');
    const std::size_t table = bytes.size();
    for (std::uint64_t level = 0; level <= 600; ++level)
        appendNumber(bytes, 8 + 3 * level, 2);
    bytes.append(6, '\0').append("\2\2", 2);
    appendNumber(bytes, 601, 8);
    appendNumber(bytes, 0, 8);
    appendNumber(bytes, table, 8);
    EXPECT_FALSE(unfoldsWithinBounds(bytes));
}

TEST(BinaryListShape, SharedStringsAreFine)
{
    EXPECT_TRUE(unfoldsWithinBounds(binaryList({arrayOf("\1\1\1"), "\x51x"})));
}

TEST(BinaryListShape, WhatIsWrittenByOrdinaryMeansIsFine)
{
    plist_t root = plist_new_dict();
    for (int number = 0; number < 300; ++number) {
        plist_t inner = plist_new_array();
        plist_array_append_item(inner, plist_new_string("the same"));
        plist_dict_set_item(root, std::to_string(number).c_str(), inner);
    }
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    const std::string written(bytes, length);
    plist_to_bin_free(bytes);
    plist_free(root);
    EXPECT_TRUE(unfoldsWithinBounds(written));
    EXPECT_TRUE(PropertyList::parse(written));
}

TEST(BinaryListShape, DamagedListsAreRefused)
{
    const std::string good = binaryList({arrayOf("\1"), "\x08"});
    ASSERT_TRUE(unfoldsWithinBounds(good));
    const struct {
        const char* why;
        std::string bytes;
    } cases[] = {
        {"no trailer", "bplist00"},
        {"a reference to no value", binaryList({arrayOf("\7"), "\x08"})},
        {"more values than bytes", binaryList({arrayOf("\1"), "\x08"}, UINT64_MAX)},
        {"more values than the table has", binaryList({arrayOf("\1"), "\x08"}, 60)},
        {"more references than bytes", binaryList({std::string("\xAF\x12\x7F\xFF\xFF\xFF"), "\x08"})},
        {"a count without number", binaryList({std::string("\xAF")})},
        {"cut off", good.substr(0, good.size() - 1)},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(unfoldsWithinBounds(c.bytes)) << c.why;
        EXPECT_FALSE(PropertyList::parse(c.bytes)) << c.why;
    }
}

} // namespace quorvane
