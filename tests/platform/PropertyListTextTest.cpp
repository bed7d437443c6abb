#include "platform/PropertyListText.h"

#include "platform/PropertyList.h"
#include "platform/Unicode.h"
#include "tests/support/PropertyListTexts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace quorvane::platform {

namespace {

constexpr std::size_t mostShown = 64U << 10U;

// A number within that many arrays.
PropertyValue arraysAround(int depth)
{
    PropertyValue value{std::int64_t{7}};
    for (int level = 0; level < depth; ++level)
        value = {PropertyValue::Array{std::move(value)}};
    return value;
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

} // namespace

TEST(PropertyListText, IsOneLineForEitherFormOfTheList)
{
    const std::string xml = test::xmlRoot(
        "<dict><key>b</key><true/><key>n</key><integer>-5</integer><key>s</key><string>a\n\"b\"</string>"
        "<key>r</key><real>0.5</real><key>l</key><array><data>AP8=</data><dict/></array>"
        "<key>d</key><date>2020-01-01T00:00:00Z</date></dict>");
    for (const std::string& bytes : test::bothForms(xml)) {
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        EXPECT_EQ(list->description(),
            R"({"b" = 1; "n" = -5; "s" = "a\n\"b\""; "r" = 0.5; "l" = (<00ff>, {}); "d" = 599529600})");
    }
    EXPECT_EQ(PropertyList().description(), "{}");
}

TEST(PropertyListText, ShowsEveryKindOfValue)
{
    EXPECT_EQ(propertyListText({false}), "0");
    EXPECT_EQ(propertyListText({std::string("back\\slash")}), R"("back\\slash")");
    EXPECT_EQ(propertyListText({PropertyValue::Data{}}), "<>");
    EXPECT_EQ(propertyListText({PropertyValue::Data{"\x0A\xF0"}}), "<0af0>");
    EXPECT_EQ(propertyListText({PropertyValue::Uid{5}}), "5");
    EXPECT_EQ(propertyListText({PropertyValue::Array{}}), "()");
    EXPECT_EQ(propertyListText({PropertyValue::Array{{true}, {false}}}), "(1, 0)");
    EXPECT_EQ(propertyListText({PropertyValue::Date{-1.5}}), "-1");
    EXPECT_EQ(propertyListText({PropertyValue::Date{1e30}}), "1000000000000000019884624838656");
}

TEST(PropertyListText, OfAnUnsignedNumberIsTheSignedOneOfTheSameBits)
{
    const std::string xml = test::xmlRoot("<dict><key>least</key><integer>9223372036854775808</integer>"
                                          "<key>most</key><integer>18446744073709551615</integer></dict>");
    for (const std::string& bytes : test::bothForms(xml)) {
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        EXPECT_EQ(list->description(), R"({"least" = -9223372036854775808; "most" = -1})");
    }
}

TEST(PropertyListText, ShowsSixtyFourLevelsAndDotsInPlaceOfWhatIsBelow)
{
    EXPECT_EQ(propertyListText(arraysAround(64)), repeated("(", 64) + "7" + repeated(")", 64));
    EXPECT_EQ(propertyListText(arraysAround(65)), repeated("(", 65) + "..." + repeated(")", 65));
    EXPECT_EQ(propertyListText(arraysAround(500)), repeated("(", 65) + "..." + repeated(")", 65));

    const PropertyValue branches{PropertyValue::Array{arraysAround(60), arraysAround(60)}};
    EXPECT_EQ(propertyListText(branches).find("..."), std::string::npos) << "levels add up across branches";
}

TEST(PropertyListText, ShowsNoMoreThanLogsCanTake)
{
    for (const std::string& value : {"<string>" + std::string(200000, 'x') + "</string>",
             "<data>" + std::string(200000, 'A') + "</data>"}) {
        const auto list = PropertyList::parse(test::xmlRoot("<dict><key>k</key>" + value + "</dict>"));
        ASSERT_TRUE(list);
        EXPECT_LE(list->description().size(), mostShown + 3);
    }
    PropertyList many;
    for (int i = 0; i < 10000; ++i)
        many.setInteger("key " + std::to_string(i), i);
    EXPECT_LE(many.description().size(), mostShown + 3);
    EXPECT_TRUE(many.description().ends_with("..."));
}

TEST(PropertyListText, IsNotCutInsideACharacter)
{
    for (const std::string& begin : {std::string(), std::string("a"), std::string("aa")}) {
        const std::string text = propertyListText({begin + repeated("\u20AC", 30000)});
        EXPECT_TRUE(isValidUtf8(text));
        EXPECT_TRUE(text.ends_with("\u20AC..."));
        EXPECT_LE(text.size(), mostShown + 3);
    }
}

} // namespace quorvane::platform
