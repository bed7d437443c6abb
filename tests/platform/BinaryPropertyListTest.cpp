#include "platform/BinaryPropertyList.h"

#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"

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
std::string binaryList(
    const std::vector<std::string>& values, std::uint64_t countedValues = 0, int offsetWidth = 2)
{
    std::string bytes = "bplist00";
    std::vector<std::size_t> places;
    for (const std::string& value : values) {
        places.push_back(bytes.size());
        bytes += value;
    }
    const std::size_t table = bytes.size();
    for (const std::size_t place : places)
        appendNumber(bytes, place, offsetWidth);
    bytes.append(6, '\0');
    bytes.push_back(static_cast<char>(offsetWidth));
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

TEST(BinaryPropertyList, AListThatDoublesWithEveryLevelIsRefused)
{
    // given arrays that each hold the next one twice, forty levels deep
    std::vector<std::string> values;
    for (char level = 1; level < 40; ++level)
        values.push_back(arrayOf(std::string(2, level)));
    values.push_back("\x08");
    const std::string bytes = binaryList(values);

    // then it is not read, which would take all memory
    EXPECT_FALSE(readPropertyList(bytes));
}

TEST(BinaryPropertyList, AListThatContainsItselfIsRefused)
{
    EXPECT_FALSE(readPropertyList(binaryList({arrayOf(std::string(1, '\0'))})));
    EXPECT_FALSE(readPropertyList(binaryList({arrayOf("\1"), arrayOf("\2"), arrayOf("\1")})));
}

TEST(BinaryPropertyList, AListOfManyReferencesToOneLongTextIsRefused)
{
    // given a text of 60,000 bytes and, in one array, references to it
    const auto listOf = [](std::uint64_t references) {
        std::string array("\xAF\x11", 2);
        appendNumber(array, references, 2);
        array.append(references, '\1');
        std::string text("\x5F\x11\xEA\x60", 4);
        text.append(60000, 'x');
        return binaryList({array, text}, 0, 3);
    };
    EXPECT_TRUE(readPropertyList(listOf(500)));
    EXPECT_FALSE(readPropertyList(listOf(600))) << "36 MB of text";
}

TEST(BinaryPropertyList, AListOfMoreValuesThanTwoMillionIsRefused)
{
    const auto listOf = [](std::uint64_t references) {
        std::string array("\xAF\x12", 2);
        appendNumber(array, references, 4);
        array.append(references, '\1');
        return binaryList({array, "\x09"}, 0, 4);
    };
    EXPECT_TRUE(readPropertyList(listOf(2U << 20U)));
    EXPECT_FALSE(readPropertyList(listOf((2U << 20U) + 1)));
}

TEST(BinaryPropertyList, KeepsNumbersOfEveryWidth)
{
    const struct {
        std::string object;
        const char* xml;
    } cases[] = {
        {std::string("\x10\xFF", 2), "<integer>255</integer>"},
        {std::string("\x11\xFF\xFE", 3), "<integer>65534</integer>"},
        {std::string("\x12\xFF\xFF\xFF\xFF", 5), "<integer>4294967295</integer>"},
        {"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "<integer>-1</integer>"},
        {std::string("\x14\0\0\0\0\0\0\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 17),
            "<integer>18446744073709551615</integer>"},
        {std::string("\x22\x3F\0\0\0", 5), "<real>0.5</real>"},
        {std::string("\x23\xBF\xE0\0\0\0\0\0\0", 9), "<real>-0.5</real>"},
        {std::string("\x33\0\0\0\0\0\0\0\0", 9), "<date>2001-01-01T00:00:00Z</date>"},
        {std::string("\x81\x01\x02", 3), "<integer>258</integer>"},
        {std::string("\x61\0\xE9", 3), "<string>\xC3\xA9</string>"},
    };
    for (const auto& c : cases) {
        const auto list = readPropertyList(binaryList({c.object}));
        ASSERT_TRUE(list) << c.xml;
        const auto xml = xmlPropertyList(*list, 1000);
        ASSERT_TRUE(xml) << c.xml;
        EXPECT_NE(xml->find(c.xml), std::string::npos) << *xml;
    }
    for (const std::string& object : {std::string("\x14\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 17),
             std::string("\x00", 1), std::string("\x62\xD8\0", 3), std::string("\x61\xD8\0", 3),
             std::string("\x51\xE9", 2), std::string("\xC0", 1)})
        EXPECT_FALSE(readPropertyList(binaryList({object})));
}

TEST(BinaryPropertyList, AListThatNestsTooDeepIsRefused)
{
    std::vector<std::string> values;
    for (int level = 1; level < 250; ++level)
        values.push_back(arrayOf(std::string(1, static_cast<char>(level))));
    values.push_back("\x08");
    EXPECT_TRUE(readPropertyList(binaryList(values)));

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
    EXPECT_FALSE(readPropertyList(bytes));
}

TEST(BinaryPropertyList, SharedStringsAreFine)
{
    EXPECT_TRUE(readPropertyList(binaryList({arrayOf("\1\1\1"), "\x51x"})));
}

TEST(BinaryPropertyList, WhatIsWrittenByOrdinaryMeansIsFine)
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
    EXPECT_TRUE(readPropertyList(written));
}

TEST(BinaryPropertyList, DamagedListsAreRefused)
{
    const std::string good = binaryList({arrayOf("\1"), "\x08"});
    ASSERT_TRUE(readPropertyList(good));
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
        EXPECT_FALSE(readPropertyList(c.bytes)) << c.why;
    }
}

} // namespace quorvane
