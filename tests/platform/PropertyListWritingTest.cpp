#include "platform/PropertyList.h"

#include "platform/PropertyListWriter.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PropertyListTexts.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <plist/plist.h>
#include <sys/stat.h>

namespace quorvane::platform {

namespace {

// Keys of every type, in the form in which they are both read and written.
const std::vector<std::pair<std::string, std::string>> everyType = {
    {"true", "<true/>"},
    {"false", "<false/>"},
    {"integer", "<integer>42</integer>"},
    {"negative", "<integer>-1</integer>"},
    {"smallest", "<integer>-9223372036854775808</integer>"},
    {"large", "<integer>9223372036854775807</integer>"},
    {"largest", "<integer>18446744073709551615</integer>"},
    {"real", "<real>2.5</real>"},
    {"small real", "<real>-0.00048828125</real>"},
    {"large real", "<real>1.2676506002282294e+30</real>"},
    {"string", "<string>a &amp; b &lt;c&gt; \xC3\xA9 \"  blanks  </string>"},
    {"empty", "<string></string>"},
    {"a string of digits", "<string>007</string>"},
    {"date", "<date>2020-02-29T12:34:56Z</date>"},
    {"early date", "<date>1961-04-12T06:07:00Z</date>"},
    {"data", "<data>AAEC/w==</data>"},
    {"no data", "<data></data>"},
    {"array", "<array><integer>-7</integer><array><true/></array><string>x</string></array>"},
    {"empty array", "<array/>"},
    {"dictionary", "<dict><key>b</key><real>0.5</real><key>a</key><dict/></dict>"},
    {"uid", "<dict><key>CF$UID</key><integer>5</integer></dict>"},
    {"", "<string>under the empty key</string>"},
    {"key &amp; &lt;sign&gt;", "<true/>"},
};

std::string everyTypeXml()
{
    std::string keys;
    for (const auto& [key, value] : everyType)
        keys.append("<key>").append(key).append("</key>").append(value);
    return test::xmlRoot("<dict>" + keys + "</dict>");
}

// Without line ends and tabs, which occur only between elements here.
std::string compact(std::string xml)
{
    xml.erase(
        std::remove_if(xml.begin(), xml.end(), [](char c) { return c == '\n' || c == '\t'; }), xml.end());
    return xml;
}

std::string written(const std::string& key, const std::string& value)
{
    return "<key>" + key + "</key>" + value;
}

} // namespace

TEST(PropertyListWriting, KeepsKeysOfEveryTypeAsTheyWere)
{
    for (const std::string& bytes : test::bothForms(everyTypeXml())) {
        auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);

        list->setInteger("set", 2);

        const std::string xml = compact(list->fileBytes().value());
        for (const auto& [key, value] : everyType)
            EXPECT_NE(xml.find(written(key, value)), std::string::npos) << key << " in " << xml;
        EXPECT_NE(xml.find(written("set", "<integer>2</integer>")), std::string::npos) << xml;
    }
}

TEST(PropertyListWriting, ReadsBackAsItWasWritten)
{
    for (const std::string& bytes : test::bothForms(everyTypeXml())) {
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        const auto again = PropertyList::parse(list->fileBytes().value());
        ASSERT_TRUE(again);
        EXPECT_EQ(again->fileBytes().value(), list->fileBytes().value());
    }
}

TEST(PropertyListWriting, SetsAValueInPlaceOfOneOfAnyType)
{
    for (const auto& [key, value] : everyType) {
        for (const std::string& bytes :
            test::bothForms(test::xmlRoot("<dict><key>k</key>" + value + "<key>after</key><true/></dict>"))) {
            auto list = PropertyList::parse(bytes);
            ASSERT_TRUE(list);

            list->setInteger("k", -3);
            EXPECT_EQ(compact(list->fileBytes().value()),
                compact(
                    test::xmlRoot("<dict><key>k</key><integer>-3</integer><key>after</key><true/></dict>")))
                << key;

            list->setBool("k", false);
            EXPECT_EQ(compact(list->fileBytes().value()),
                compact(test::xmlRoot("<dict><key>k</key><false/><key>after</key><true/></dict>")))
                << key;
        }
    }
}

TEST(PropertyListWriting, NewKeysGoToTheEndOfAnEmptyListInTheirOrder)
{
    PropertyList list;
    list.setInteger("b", 2);
    list.setBool("a", true);
    list.setInteger("c", 2147483647);

    EXPECT_EQ(compact(list.fileBytes().value()),
        compact(test::xmlRoot("<dict><key>b</key><integer>2</integer><key>a</key><true/>"
                              "<key>c</key><integer>2147483647</integer></dict>")));
    EXPECT_EQ(list.integerForKey("b"), 2);
    EXPECT_TRUE(list.boolForKey("a"));
}

TEST(PropertyListWriting, WritesInPlaceAndLeavesPermissionsAlone)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("list.plist", std::string(10000, 'x'));
    chmod(file.c_str(), 0600);
    struct stat before { };
    ASSERT_EQ(stat(file.c_str(), &before), 0);
    PropertyList list;
    list.setBool("k", true);

    ASSERT_TRUE(list.writeToFile(file));

    struct stat after { };
    ASSERT_EQ(stat(file.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(test::TemporaryFolder::contents(file), list.fileBytes().value());
}

TEST(PropertyListWriting, MakesAFileThatIsMissing)
{
    const test::TemporaryFolder folder;
    ASSERT_TRUE(PropertyList().writeToFile(folder.path("new.plist")));
    EXPECT_TRUE(PropertyList::read(folder.path("new.plist")));
}

TEST(PropertyListWriting, AnswersWhereItCannotWrite)
{
    const test::TemporaryFolder folder;
    const std::string elsewhere = folder.write("elsewhere", "untouched");
    std::filesystem::create_symlink(elsewhere, folder.path("link"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const PropertyList list;

    EXPECT_FALSE(list.writeToFile(folder.path("missing/list.plist")));
    EXPECT_FALSE(list.writeToFile(folder.path())) << "a folder";
    EXPECT_FALSE(list.writeToFile(folder.path("link"))) << "a link";
    EXPECT_FALSE(list.writeToFile(folder.path("pipe"))) << "a pipe that nobody reads";
    EXPECT_FALSE(list.writeToFile("/dev/null")) << "a device";
    EXPECT_FALSE(list.writeToFile("/dev/full")) << "a full device";
    EXPECT_EQ(test::TemporaryFolder::contents(elsewhere), "untouched");
}

TEST(PropertyListWriting, UsesTheBinaryFormForTextsThatXmlCannotHold)
{
    const test::TemporaryFolder folder;
    for (const std::string& text : {std::string("a\x01z"), std::string("\x1B"), std::string("a\0z", 3),
             std::string("\xEF\xBF\xBF"), std::string("\xEF\xBF\xBE")}) {
        // given unknown keys and texts with control characters
        PropertyValue root{PropertyValue::Dictionary{{"k", {std::int64_t{1}}}, {text, {true}},
            {"list", {PropertyValue::Array{{text}, {std::string("\xC3\xA9")}}}}}};
        auto list = PropertyList::parse(*binaryPropertyList(root, 1000));
        ASSERT_TRUE(list);

        // when another key is set
        list->setInteger("k", 2);
        ASSERT_TRUE(list->writeToFile(folder.path("list.plist")));

        // then the rest of the list is unchanged, and other readers can read it
        const std::string bytes = test::TemporaryFolder::contents(folder.path("list.plist"));
        EXPECT_EQ(bytes.substr(0, 8), "bplist00");
        const auto again = PropertyList::parse(bytes);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->integerForKey("k"), 2);
        EXPECT_TRUE(again->boolForKey(text));
        EXPECT_EQ(again->description(), list->description());
        plist_t other = nullptr;
        plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &other);
        EXPECT_EQ(plist_dict_get_size(other), 3U);
        plist_free(other);
    }
}

TEST(PropertyListWriting, ReadsControlCharactersThatOthersWroteIntoXml)
{
    const auto list = PropertyList::parse(test::xmlRoot("<dict><key>a\x01z</key><true/></dict>"));
    ASSERT_TRUE(list);
    EXPECT_TRUE(list->boolForKey("a\x01z"));
}

TEST(PropertyListWriting, KeepsTabsAndLineEndsInXml)
{
    PropertyList list;
    list.setBool("a\tb\nc\rd\r\ne", true);
    const std::string bytes = list.fileBytes().value();
    EXPECT_NE(bytes.find("<key>a\tb\nc&#13;d&#13;\ne</key>"), std::string::npos) << bytes;
    EXPECT_TRUE(PropertyList::parse(bytes)->boolForKey("a\tb\nc\rd\r\ne"));
}

TEST(PropertyListWriting, KeepsDatesOfEveryCentury)
{
    const std::string dates = "<key>past</key><date>0001-01-01T00:00:00Z</date>"
                              "<key>future</key><date>4001-01-01T00:00:00Z</date>"
                              "<key>last</key><date>9999-12-31T23:59:59Z</date>";
    for (const std::string& bytes : test::bothForms(test::xmlRoot("<dict>" + dates + "</dict>"))) {
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        EXPECT_NE(compact(list->fileBytes().value()).find(dates), std::string::npos);
    }

    const PropertyValue beyond{PropertyValue::Dictionary{{"k", {PropertyValue::Date{1e30}}}}};
    EXPECT_FALSE(xmlPropertyList(beyond, 1000));
    EXPECT_TRUE(binaryPropertyList(beyond, 1000));
}

TEST(PropertyListWriting, CarriesListsOfSixteenMebibytes)
{
    // given a list of many keys in one form or the other, just below the limit
    std::string keys;
    int count = 0;
    const std::string value = "<string>7" + std::string(60, ' ') + "</string>";
    while (keys.size() < (16U << 20U) - 400)
        keys += "<key>key " + std::to_string(count++) + "</key>" + value;
    const std::string xml = test::xmlRoot("<dict>" + keys + "</dict>");
    ASSERT_LE(xml.size(), 16U << 20U);
    auto list = PropertyList::parse(xml);
    ASSERT_TRUE(list);

    // when a key is set and the list written, which would be too large as indented XML
    list->setInteger("key 5", 8);
    const test::TemporaryFolder folder;
    ASSERT_TRUE(list->writeToFile(folder.path("list.plist")));

    // then every key exists
    const auto again = PropertyList::read(folder.path("list.plist"));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->integerForKey("key 5"), 8);
    EXPECT_EQ(again->integerForKey("key 0"), 7);
    EXPECT_EQ(again->integerForKey("key " + std::to_string(count - 1)), 7);
}

TEST(PropertyListWriting, LeavesAFileAloneWhenTheNewOneCouldNotBeReadAgain)
{
    // given a list that is small only because two references share one value of 9,000,000 bytes
    const auto number = [](std::uint64_t value, int width) {
        std::string bytes;
        for (int shift = (width - 1) * 8; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<char>(value >> shift & 0xFFU));
        return bytes;
    };
    const std::string data(9000000, 'x');
    std::string bytes
        = std::string("bplist00\xD1\1\2\x51k\xA2\3\3\x4F\x12", 18) + number(data.size(), 4) + data;
    const std::size_t table = bytes.size();
    for (const std::size_t place : {8U, 11U, 13U, 16U})
        bytes += number(place, 4);
    bytes += std::string(6, '\0') + "\4\1" + number(4, 8) + number(0, 8) + number(table, 8);
    const test::TemporaryFolder folder;
    const std::string file = folder.write("list.plist", bytes);
    const auto list = PropertyList::read(file);
    ASSERT_TRUE(list);

    EXPECT_FALSE(list->fileBytes());
    EXPECT_FALSE(list->writeToFile(file));
    EXPECT_EQ(test::TemporaryFolder::contents(file), bytes);
}

TEST(PropertyListWriting, ReadsAndWritesNumbersWithAPointInEveryLocale)
{
    if (std::system("localedef --version >/dev/null 2>&1 && test -e /usr/share/i18n/locales/de_DE") != 0)
        GTEST_SKIP() << "this machine cannot make a locale with a decimal comma";
    const test::TemporaryFolder folder;
    const std::string made = "localedef -i de_DE -f UTF-8 '" + folder.path("de_DE.UTF-8") + "' 2>/dev/null";
    ASSERT_EQ(std::system(made.c_str()), 0);
    const test::EnvironmentVariable locales("LOCPATH", folder.path());
    // In a separate process: the C library never frees what it allocates for LOCPATH.
    EXPECT_EXIT(
        {
            uselocale(newlocale(LC_NUMERIC_MASK, "de_DE.UTF-8", nullptr));
            const auto list = PropertyList::parse(test::xmlRoot("<dict><key>k</key><real>0.5</real></dict>"));
            std::fprintf(stderr, "locale: %.1f, true: %d, %s, %s", 0.5, list->boolForKey("k") ? 1 : 0,
                list->description().c_str(), compact(list->fileBytes().value()).c_str());
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), R"(locale: 0,5, true: 1, \{"k" = 0\.5\}, .*<real>0\.5</real>)");
}

} // namespace quorvane::platform
