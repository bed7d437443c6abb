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
