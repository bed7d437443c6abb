#include "platform/BinaryPropertyList.h"

#include "platform/PropertyList.h"
#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include <plist/plist.h>

namespace quorvane::platform {

namespace {

void appendNumber(std::string& bytes, std::uint64_t number, int width)
{
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<char>(number >> shift & 0xFFU));
}

struct Trailer {
    int offsetWidth = 2;
    int referenceWidth = 1;
    std::uint64_t countedValues = 0; // 0: the actual number
    std::uint64_t root = 0;
};

// A binary list whose values are these bytes.
std::string binaryList(const std::vector<std::string>& values, const Trailer& trailer = {})
{
    std::string bytes = "bplist00";
    std::vector<std::size_t> places;
    for (const std::string& value : values) {
        places.push_back(bytes.size());
        bytes += value;
    }
    const std::size_t table = bytes.size();
    for (const std::size_t place : places)
        appendNumber(bytes, place, trailer.offsetWidth);
    bytes.append(6, '\0');
    bytes.push_back(static_cast<char>(trailer.offsetWidth));
    bytes.push_back(static_cast<char>(trailer.referenceWidth));
    appendNumber(bytes, trailer.countedValues == 0 ? values.size() : trailer.countedValues, 8);
    appendNumber(bytes, trailer.root, 8);
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
    // given arrays that each contain the next one twice, forty levels deep
    std::vector<std::string> values;
    for (char level = 1; level < 40; ++level)
        values.push_back(arrayOf(std::string(2, level)));
    values.push_back("\x08");
    const std::string bytes = binaryList(values);

    // then it is rejected, since reading it would exhaust the memory
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
        return binaryList({array, text}, {.offsetWidth = 3});
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
        return binaryList({array, "\x09"}, {.offsetWidth = 4});
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

    values.clear();
    for (std::uint64_t level = 1; level <= 600; ++level) {
        values.emplace_back("\xA1");
        appendNumber(values.back(), level, 2);
    }
    values.emplace_back("\x08");
    EXPECT_FALSE(readPropertyList(binaryList(values, {.referenceWidth = 2})));
}

TEST(BinaryPropertyList, SharedStringsAreFine)
{
    EXPECT_TRUE(readPropertyList(binaryList({arrayOf("\1\1\1"), "\x51x"})));
}

TEST(BinaryPropertyList, KeepsTheLastValueOfAKeyThatComesAgain)
{
    // given the keys b, a, b and b, whose values are 1 to 4
    std::string dictionary("\xD4\1\2\1\1", 5);
    std::vector<std::string> values{"",
        "\x51"
        "b",
        "\x51"
        "a"};
    for (char value = 1; value <= 4; ++value) {
        dictionary.push_back(static_cast<char>(values.size()));
        values.push_back(std::string("\x10") + value);
    }
    values.front() = dictionary;

    const auto list = readPropertyList(binaryList(values));
    ASSERT_TRUE(list);
    const auto* entries = list->as<PropertyValue::Dictionary>();
    ASSERT_EQ(entries->size(), 2U);
    EXPECT_EQ(entries->front().key, "b");
    EXPECT_EQ(*list->find<std::int64_t>("b"), 4);
    EXPECT_EQ(*list->find<std::int64_t>("a"), 2);
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

TEST(BinaryPropertyList, ReferencesOfTwoBytesReachValuesBeyondTheFirst255)
{
    std::vector<std::string> values(1, std::string("\xAF\x11\x01\x2C", 4)); // an array of 300
    for (std::uint64_t number = 0; number < 300; ++number) {
        appendNumber(values.front(), number + 1, 2);
        values.emplace_back("\x11");
        appendNumber(values.back(), number * 7, 2);
    }
    const auto list = readPropertyList(binaryList(values, {.referenceWidth = 2}));
    ASSERT_TRUE(list);
    const auto* array = list->as<PropertyValue::Array>();
    ASSERT_NE(array, nullptr);
    ASSERT_EQ(array->size(), 300U);
    for (std::size_t number = 0; number < 300; ++number) {
        const auto* value = (*array)[number].as<std::int64_t>();
        ASSERT_NE(value, nullptr) << number;
        EXPECT_EQ(*value, static_cast<std::int64_t>(number * 7));
    }
}

TEST(BinaryPropertyList, ReadsTextsOfEveryLengthThatUtf8Has)
{
    // U+0041, U+00E9, U+20AC and U+1F600: one to four bytes
    const std::string text("\x65\0A\0\xE9\x20\xAC\xD8\x3D\xDE\x00", 11);
    const auto value = readPropertyList(binaryList({text}));
    ASSERT_TRUE(value);
    const auto* read = value->as<std::string>();
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(*read, "A\u00E9\u20AC\U0001F600");

    const auto asKey = PropertyList::parse(binaryList({std::string("\xD1\1\2", 3), text, "\x09"}));
    ASSERT_TRUE(asKey);
    EXPECT_TRUE(asKey->boolForKey("A\u00E9\u20AC\U0001F600"));
}

TEST(BinaryPropertyList, ARootThatIsNoDictionaryIsAValueButNoList)
{
    for (const std::string& root : {std::string("\x09"), std::string("\x51x"), arrayOf("")}) {
        EXPECT_TRUE(readPropertyList(binaryList({root})));
        EXPECT_FALSE(PropertyList::parse(binaryList({root})));
    }
}

TEST(BinaryPropertyList, PlacesThatWrapAroundAreRefused)
{
    for (const std::uint64_t place : {UINT64_MAX, UINT64_MAX - 1, UINT64_MAX - 7, UINT64_MAX / 2 + 1}) {
        // The offset of the only value is the table's only entry.
        std::string list = binaryList({"\x08"}, {.offsetWidth = 8});
        std::string wrapped;
        appendNumber(wrapped, place, 8);
        EXPECT_FALSE(readPropertyList(std::string(list).replace(9, 8, wrapped))) << place;
        EXPECT_FALSE(readPropertyList(list.replace(list.size() - 8, 8, wrapped))) << "table at " << place;
    }
    for (const char* marker : {"\x4F\x13", "\x5F\x13", "\x6F\x13", "\xAF\x13", "\xDF\x13"}) {
        std::string value = marker;
        appendNumber(value, UINT64_MAX / 2 + 1, 8); // twice this wraps to 0
        EXPECT_FALSE(readPropertyList(binaryList({value}))) << marker;
    }
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
        {"more values than bytes", binaryList({arrayOf("\1"), "\x08"}, {.countedValues = UINT64_MAX})},
        {"more values than the table has", binaryList({arrayOf("\1"), "\x08"}, {.countedValues = 60})},
        {"more references than bytes", binaryList({std::string("\xAF\x12\x7F\xFF\xFF\xFF"), "\x08"})},
        {"a count without number", binaryList({std::string("\xAF")})},
        {"no root", binaryList({"\x08"}, {.root = 1})},
        {"a root beyond all numbers", binaryList({"\x08"}, {.root = UINT64_MAX})},
        {"offsets without width", binaryList({"\x08"}, {.offsetWidth = 0})},
        {"cut off", good.substr(0, good.size() - 1)},
    };
    for (const auto& c : cases) {
        EXPECT_FALSE(readPropertyList(c.bytes)) << c.why;
    }
}

} // namespace quorvane::platform
