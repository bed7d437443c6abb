#include "platform/PropertyList.h"

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

namespace quorvane {

namespace {

// Keys of every type and how each is written, which is also how it was read.
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
    return xmlRoot("<dict>" + keys + "</dict>");
}

// Without line ends and tabs, which here stand between elements only.
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
    for (const std::string& bytes : {everyTypeXml(), binaryOf(everyTypeXml())}) {
        auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);

        list->setInteger("set", 2);

        const std::string xml = compact(list->xml());
        for (const auto& [key, value] : everyType)
            EXPECT_NE(xml.find(written(key, value)), std::string::npos) << key << " in " << xml;
        EXPECT_NE(xml.find(written("set", "<integer>2</integer>")), std::string::npos) << xml;
    }
}

TEST(PropertyListWriting, ReadsBackAsItWasWritten)
{
    for (const std::string& bytes : {everyTypeXml(), binaryOf(everyTypeXml())}) {
        const auto list = PropertyList::parse(bytes);
        ASSERT_TRUE(list);
        const auto again = PropertyList::parse(list->xml());
        ASSERT_TRUE(again);
        EXPECT_EQ(again->xml(), list->xml());
    }
}

TEST(PropertyListWriting, SetsAValueInPlaceOfOneOfAnyType)
{
    for (const auto& [key, value] : everyType) {
        auto list
            = PropertyList::parse(xmlRoot("<dict><key>k</key>" + value + "<key>after</key><true/></dict>"));
        ASSERT_TRUE(list);

        list->setInteger("k", -3);
        EXPECT_EQ(compact(list->xml()),
            compact(xmlRoot("<dict><key>k</key><integer>-3</integer><key>after</key><true/></dict>")))
            << key;

        list->setBool("k", false);
        EXPECT_EQ(compact(list->xml()),
            compact(xmlRoot("<dict><key>k</key><false/><key>after</key><true/></dict>")))
            << key;
    }
}

TEST(PropertyListWriting, NewKeysGoToTheEndOfAnEmptyListInTheirOrder)
{
    PropertyList list;
    list.setInteger("b", 2);
    list.setBool("a", true);
    list.setInteger("c", 2147483647);

    EXPECT_EQ(compact(list.xml()),
        compact(xmlRoot("<dict><key>b</key><integer>2</integer><key>a</key><true/>"
                        "<key>c</key><integer>2147483647</integer></dict>")));
    EXPECT_EQ(list.integerForKey("b"), 2);
    EXPECT_TRUE(list.boolForKey("a"));
}

TEST(PropertyListWriting, DescribesTheListInOneLine)
{
    auto list = PropertyList::parse(xmlRoot(
        "<dict><key>b</key><true/><key>n</key><integer>-5</integer><key>s</key><string>a\n\"b\"</string>"
        "<key>r</key><real>0.5</real><key>l</key><array><data>AP8=</data><dict/></array>"
        "<key>d</key><date>2001-01-01T00:00:09Z</date></dict>"));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->description(),
        R"({"b" = 1; "n" = -5; "s" = "a\n\"b\""; "r" = 0.5; "l" = (<00ff>, {}); "d" = 9})");
    EXPECT_EQ(PropertyList().description(), "{}");
}

TEST(PropertyListWriting, DescribesDeepNestingWithoutItsDepths)
{
    std::string open;
    std::string close;
    for (int level = 0; level < 5000; ++level) {
        open += "<array>";
        close += "</array>";
    }
    const auto list = PropertyList::parse(xmlRoot("<dict><key>k</key>" + open + close + "</dict>"));
    ASSERT_TRUE(list);
    EXPECT_LT(list->description().size(), 1000U);
}

TEST(PropertyListWriting, WritesInPlaceAndLeavesPermissionsAlone)
{
    const TemporaryFolder folder;
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
    EXPECT_EQ(TemporaryFolder::contents(file), list.xml());
}

TEST(PropertyListWriting, MakesAFileThatIsMissing)
{
    const TemporaryFolder folder;
    ASSERT_TRUE(PropertyList().writeToFile(folder.path("new.plist")));
    EXPECT_TRUE(PropertyList::read(folder.path("new.plist")));
}

TEST(PropertyListWriting, AnswersWhereItCannotWrite)
{
    const TemporaryFolder folder;
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
    EXPECT_EQ(TemporaryFolder::contents(elsewhere), "untouched");
}

TEST(PropertyListWriting, LeavesAFileAloneWhenTheNewOneCouldNotBeReadAgain)
{
    // given a list that is small in the binary form only
    std::string numbers;
    for (int number = 0; number < 8000; ++number)
        numbers += "<integer>" + std::to_string(number % 200) + "</integer>";
    const TemporaryFolder folder;
    const std::string file = folder.write(
        "list.plist", binaryOf(xmlRoot("<dict><key>k</key><array>" + numbers + "</array></dict>")));
    const auto list = PropertyList::read(file);
    ASSERT_TRUE(list);
    ASSERT_GT(list->xml().size(), 128U << 10U);

    EXPECT_FALSE(list->writeToFile(file));
    EXPECT_TRUE(PropertyList::read(file));
}

TEST(PropertyListWriting, ReadsAndWritesNumbersWithAPointInEveryLocale)
{
    if (std::system("localedef --version >/dev/null 2>&1 && test -e /usr/share/i18n/locales/de_DE") != 0)
        GTEST_SKIP() << "this machine cannot make a locale with a decimal comma";
    const TemporaryFolder folder;
    const std::string made = "localedef -i de_DE -f UTF-8 '" + folder.path("de_DE.UTF-8") + "' 2>/dev/null";
    ASSERT_EQ(std::system(made.c_str()), 0);
    const EnvironmentVariable locales("LOCPATH", folder.path());
    // In a process of its own: the system never gives back what it allocates for LOCPATH.
    EXPECT_EXIT(
        {
            uselocale(newlocale(LC_NUMERIC_MASK, "de_DE.UTF-8", nullptr));
            const auto list = PropertyList::parse(xmlRoot("<dict><key>k</key><real>0.5</real></dict>"));
            std::fprintf(stderr, "locale: %.1f, true: %d, %s, %s", 0.5, list->boolForKey("k") ? 1 : 0,
                list->description().c_str(), compact(list->xml()).c_str());
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), R"(locale: 0,5, true: 1, \{"k" = 0\.5\}, .*<real>0\.5</real>)");
}

} // namespace quorvane
