#include "rules/JoinedLines.h"

#include "platform/Unicode.h"
#include "rules/RuleLine.h"
#include "tests/rules/RandomRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Keys = std::vector<std::string_view>;

const Keys jsonKeys{"path", "processName", "tag", "constraint", "operations", "created"};

std::string lineOf(const RuleValue& rule)
{
    return askValue(rule, [](const auto& fields) { return ruleLine(fields); });
}

std::string writtenLine(const RuleValue& rule)
{
    return std::string(writtenPart(lineOf(rule)));
}

bool isWatch(const RuleValue& rule)
{
    return std::holds_alternative<WatchValue>(rule);
}

RuleValue plainRule(NullableText path = "/x", std::uint64_t created = 5)
{
    return makeRuleValue(PolicyRuleFields{.policyClass = 1,
        .policyType = 1,
        .path = std::move(path),
        .processName = "any",
        .tag = "t",
        .constraint = "c",
        .operations = 3,
        .created = created});
}

// A rule of `text` for comparison: its line and its cut properties.
std::string shown(const JoinedRule& rule)
{
    std::string text = lineOf(rule.rule);
    text.pop_back();
    for (const std::string_view key : rule.cut)
        text.append(" -").append(key);
    return text;
}

std::vector<std::string> rulesOf(std::string_view bytes)
{
    std::vector<std::string> rules;
    for (const JoinedLine& line : joinedLines(bytes)) {
        for (const JoinedRule& rule : line.rules)
            rules.push_back(shown(rule));
    }
    return rules;
}

const std::string further = R"(deny path "/x" "any" rw "t" "c" "5")";

} // namespace

TEST(JoinedLines, AreTakenApartWhereverTheFirstRuleIsCut)
{
    const struct {
        std::string line; // of the first rule, cut
        std::string first;
    } cases[] = {
        {R"(allow prefix "/a" "/p" rw "t" "c" "147")", R"(allow prefix "/a" "/p" rw "t" "c" "147")"},
        {R"(allow prefix "/a" "/p" rw "t" "c" "147)", R"(allow prefix "/a" "/p" rw "t" "c" "0" -created)"},
        {R"(allow prefix "/a" "/p" rw "t" "c" ")", R"(allow prefix "/a" "/p" rw "t" "c" "0" -created)"},
        {R"(allow prefix "/a" "/p" rw "t" "c" )", R"(allow prefix "/a" "/p" rw "t" "c" "0" -created)"},
        {R"(allow prefix "/a" "/p" rw "t" "c")", R"(allow prefix "/a" "/p" rw "t" "c" "0" -created)"},
        {R"(allow prefix "/a" "/p" rw "t" "TEA)",
            R"(allow prefix "/a" "/p" rw "t" "TEA" "0" -constraint -created)"},
        {R"(allow prefix "/a" "/p" rw "my t)",
            R"(allow prefix "/a" "/p" rw "my t" "" "0" -tag -constraint -created)"},
        {R"(allow prefix "/a" "/p" rw "my )",
            R"(allow prefix "/a" "/p" rw "my" "" "0" -tag -constraint -created)"},
        {R"(allow prefix "/a" "/p" rw )", R"(allow prefix "/a" "/p" rw "" "" "0" -tag -constraint -created)"},
        {R"(allow prefix "/a" "/p" r)",
            R"(allow prefix "/a" "/p" r "" "" "0" -tag -constraint -operations -created)"},
        {R"(allow prefix "/a" "/p" )",
            R"(allow prefix "/a" "/p"  "" "" "0" -tag -constraint -operations -created)"},
        {R"(allow prefix "/a" "/Appl)",
            R"(allow prefix "/a" "/Appl"  "" "" "0" -processName -tag -constraint -operations -created)"},
        {"allow prefix \"/a\xE6\x97",
            R"(allow prefix "/a" ""  "" "" "0" -path -processName -tag -constraint -operations -created)"},
        {R"(watch suffix "/a" "/p" rw "ta)", R"(watch suffix "/a" "/p" rw "ta" -tag)"},
        {R"(watch suffix "/a" "/p" rw "ta")", R"(watch suffix "/a" "/p" rw "ta")"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rulesOf(c.line + further + "\n"), (std::vector{c.first, further})) << c.line;
}

TEST(JoinedLines, MayJoinMoreThanTwoRules)
{
    const std::string line = R"(allow path "/a" "any" r "one)"
                             R"(watch prefix "/b" "any" w)"
                             R"(deny suffix "/c" "any" x "" "" "7")"
        + further;

    const std::string file = "; first\n\n" + line + "\n" + further + "\n";
    const auto joined = joinedLines(file);

    ASSERT_EQ(joined.size(), 1U);
    EXPECT_EQ(joined[0].number, 3U);
    EXPECT_EQ(joined[0].text, line);
    EXPECT_EQ(rulesOf(line + "\n"),
        (std::vector<std::string>{R"(allow path "/a" "any" r "one" "" "0" -tag -constraint -created)",
            R"(watch prefix "/b" "any" w "" -tag -operations)", R"(deny suffix "/c" "any" x "" "" "7")",
            further}));
}

TEST(JoinedLines, AreNotSeenInWhatOneRuleHolds)
{
    const std::string cases[] = {
        "",
        further,
        further + "\n" + further + "\n",
        further + "\r" + further + "\r\n",
        R"(allow path "/a" "any" r "was deny path /x any" "" "0")",
        R"(allow path "/a" "any" r "was deny path " "" "0")",
        R"(allow path "/a" "any" r "was deny path ")",
        R"(allow path "/a deny path " "any" r "" "" "0")",
        R"(allow path "/a" "deny path " r "" "" "0")",
        R"(watch path "/a" "any" r "deny path ")",
        R"(allow path "/a"b" "any" r "" "" "0")",
        R"(allow path "/a" "any" r "" "" "0" ; was deny path "/x" "any" r)",
        R"(allow path "/a" "any" r "" "" "0" eighth "ninth deny path "/x" any r)",
        R"(; allow path "/a" "any" r "" "" "0"deny path "/x" "any" r)",
        R"(allow path "/a" "any" r "" "" "0"deny file "/x" "any" r)",
        R"(allow path "/a" "any" r "" "" "0"err path "/x" "any" r)",
        R"(allow path "/a" "any" r "" "" "0"deny path /x any r)",
        R"(allow path "/a" "any" r "" "" "0"denypath "/x" any r)",
        R"(set name 1 deny path "/x" "any" r)",
        R"(other words "/a" "any" r "" "" "0"deny path "/x" "any" r)",
        "allow path \"/a\" \"any\" r \"\" \"\" \"0\"deny path \"/x\"\n", // no rule without operations
        R"(allow path "/a" "any" r "" "" "0"deny path ")",
    };
    for (const std::string& text : cases) {
        EXPECT_EQ(rulesOf(text), std::vector<std::string>()) << text;
        EXPECT_EQ(rescuedText(text), text);
    }
}

TEST(JoinedLines, AreSeenBehindRulesThatWereNotWrittenByThisSystem)
{
    const struct {
        std::string line;
        std::string first;
    } cases[] = {
        {"  allow  path /a any r",
            R"(allow path "/a" "any" r "" "" "0" -tag -constraint -operations -created)"},
        {R"(allow path "/a" "any" "r" t c 5)", R"(allow path "/a" "any" r "t" "c" "0" -created)"},
        {R"(allow path "/a" "any" r "" "" "0" )", R"(allow path "/a" "any" r "" "" "0")"},
        {R"(err path "/a" "any" r "" "" "0")", R"(err path "/a" "any" r "" "" "0")"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rulesOf(c.line + further), (std::vector{c.first, further})) << c.line;
}

TEST(JoinedLines, KnowThePathOfAFurtherRuleFromTheEndOfATag)
{
    // Before a path that begins with a blank, the quote could also end the tag.
    EXPECT_EQ(rulesOf(R"(allow path "/a" "any" r "tdeny suffix " copy" "any" r "" "" "0")"),
        (std::vector<std::string>{R"(allow path "/a" "any" r "t" "" "0" -tag -constraint -created)",
            R"(deny suffix " copy" "any" r "" "" "0")"}));
    EXPECT_EQ(rulesOf(R"(allow path "/a" "any" r "tdeny suffix "" "any" r "" "" "0")"),
        (std::vector<std::string>{R"(allow path "/a" "any" r "t" "" "0" -tag -constraint -created)",
            R"(deny suffix "" "any" r "" "" "0")"}));
}

TEST(JoinedLines, TellTheLastRuleCutOnlyWhereTheFileEnds)
{
    const std::string first = R"(allow path "/a" "any" r "" "" "0")";

    EXPECT_EQ(rulesOf(first + "deny path \"/x\" \"any\" r\n"),
        (std::vector<std::string>{first, R"(deny path "/x" "any" r "" "" "0")"}));
    EXPECT_EQ(rulesOf(first + R"(deny path "/x" "any" r)"),
        (std::vector<std::string>{
            first, R"(deny path "/x" "any" r "" "" "0" -tag -constraint -operations -created)"}));
    EXPECT_EQ(rulesOf(first + "deny path \"/x\" \"any\" r \"t\n"),
        (std::vector<std::string>{first, R"(deny path "/x" "any" r "t" "" "0" -tag -constraint -created)"}));
}

TEST(JoinedLines, CountLinesAsEditorsDo)
{
    const std::string joined = further + further;
    const std::string file = "\r\n" + joined + "\r\n; a\vb\rc\r\n" + joined + "\n\n" + joined;
    const auto lines = joinedLines(file);

    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].number, 2U);
    EXPECT_EQ(lines[1].number, 4U);
    EXPECT_EQ(lines[2].number, 6U);
}

TEST(RescuedText, KeepsEveryOtherByte)
{
    const std::string before = "\xEF\xBB\xBF; caf\xE9\r\n\n set x 1\tdeny\r";
    const std::string behind = "\n\n  allow path \"/a\" any r ; end\xFF";

    EXPECT_EQ(rescuedText(before + R"(allow path "/a" "any" r "t)" + further + behind),
        before + R"(allow path "/a" "any" r "t" "" "0")" + "\n" + further + behind);
}

TEST(RescuedText, EndsEachRuleAsTheLineWasEnded)
{
    for (const std::string end : {"\n", "\r\n", "\r"}) {
        EXPECT_EQ(rescuedText(further + further + end + "; x"), further + end + further + end + "; x");
    }
    EXPECT_EQ(rescuedText(further + further), further + "\n" + further + "\n");
}

TEST(RescuedText, LeavesARuleWithoutOperationsTooShortToDecideAnything)
{
    EXPECT_EQ(rescuedText(R"(allow path "/a" "/Appl)" + further + "\n"),
        R"(allow path "/a" "/Appl")" + ("\n" + further + "\n"));
    EXPECT_EQ(rescuedText(R"(allow path "/a" "any" )" + further + "\n"),
        R"(allow path "/a" "any")" + ("\n" + further + "\n"));
}

// The opposite direction: files as left by the writer.

namespace {

RuleValue randomRule(test::RandomRules& random)
{
    const auto text = [&random](std::size_t most) {
        static const std::vector<std::string> pieces{"a", "b", "/", ".", "x y", "\u00E9", "\u00DF", "\u65E5",
            "\u672C\u8A9E", "\U0001F600", "deny", " path ", "rw"};
        std::string made = "/";
        for (std::size_t left = random.below(most); left > 0; --left)
            made += random.oneOf(pieces);
        return made.ends_with(' ') ? made + "." : made;
    };
    const auto operations = static_cast<std::uint32_t>(1 + random.below(31));
    const auto type = static_cast<std::int32_t>(random.below(3));
    const std::string tag = random.below(2) == 0 ? "" : text(12);
    if (random.below(3) == 0) {
        return makeRuleValue(WatchRuleFields{.policyType = type,
            .path = text(12),
            .processName = text(8),
            .tag = tag,
            .operations = operations});
    }
    return makeRuleValue(PolicyRuleFields{.policyClass = static_cast<std::int32_t>(random.below(2)),
        .policyType = type,
        .path = text(12),
        .processName = text(8),
        .tag = tag,
        .constraint = random.oneOf<std::string>({"", "TEAM", "\u00C4"}),
        .operations = operations,
        .created = random.oneOf<std::uint64_t>({0, 7, 1478000000})});
}

// What reads back of a rule whose line loses its end: the fields of the cut line that have survived.
std::string expectedOf(const RuleValue& rule)
{
    const std::string whole = lineOf(rule);
    const std::size_t length = writtenPart(whole).size();
    if (length + 1 >= whole.size())
        return whole.substr(0, whole.size() - 1);
    // Each field by the positions of its first character and of the one that ends it.
    struct Place {
        std::string_view key;
        std::size_t begin, end;
    };
    std::vector<Place> places;
    std::size_t at = whole.find('"');
    const std::vector<std::string_view> keys = isWatch(rule)
        ? Keys{"path", "processName", "operations", "tag"}
        : Keys{"path", "processName", "operations", "tag", "constraint", "created"};
    for (const std::string_view key : keys) {
        const bool quoted = whole[at] == '"';
        const std::size_t begin = at + (quoted ? 1 : 0);
        const std::size_t end = whole.find(quoted ? '"' : ' ', begin);
        places.push_back({key, begin, end});
        at = end + (quoted ? 2 : 1);
    }
    std::vector<std::string> kept;
    std::vector<std::string_view> cut;
    for (const Place& place : places) {
        std::string text = whole.substr(place.begin, place.end - place.begin);
        if (place.end >= length) {
            cut.push_back(place.key);
            text.resize(length > place.begin ? length - place.begin : 0);
            while (!platform::isValidUtf8(text) || text.ends_with(' '))
                text.pop_back();
            if (place.key == "created")
                text = "0";
        }
        kept.push_back(text);
    }
    std::string line = whole.substr(0, whole.find('"'));
    for (std::size_t i = 0; i < kept.size(); ++i)
        line += (i == 0 ? "" : " ") + (keys[i] == "operations" ? kept[i] : '"' + kept[i] + '"');
    for (const std::string_view key : jsonKeys) {
        if (std::find(cut.begin(), cut.end(), key) != cut.end())
            line.append(" -").append(key);
    }
    return line;
}

} // namespace

TEST(JoinedLines, GiveBackEveryRuleOfAWrittenFileAsFarAsItIsThere)
{
    test::RandomRules random(51);
    std::size_t joinedRules = 0;
    for (int round = 0; round < 1500; ++round) {
        std::string file;
        std::vector<std::vector<std::string>> lines(1); // rules by physical line
        for (std::size_t left = 1 + random.below(6); left > 0; --left) {
            const RuleValue rule = randomRule(random);
            file += writtenLine(rule);
            lines.back().push_back(expectedOf(rule));
            if (file.ends_with('\n'))
                lines.emplace_back();
        }
        file += lineOf(plainRule()); // so that no rule is cut by the end of the file
        lines.back().push_back(expectedOf(plainRule()));
        std::vector<std::string> expected;
        for (const auto& line : lines) {
            if (line.size() > 1)
                expected.insert(expected.end(), line.begin(), line.end());
        }
        joinedRules += expected.size();

        ASSERT_EQ(rulesOf(file), expected) << file;
        ASSERT_TRUE(joinedLines(rescuedText(file)).empty()) << file;
    }
    EXPECT_GT(joinedRules, 2500U);
}

TEST(JoinedLines, AreNoneInFilesThatAreWrittenWhole)
{
    test::RandomRules random(52);
    for (int round = 0; round < 1000; ++round) {
        std::string file;
        for (std::size_t left = random.below(6); left > 0; --left)
            file += lineOf(randomRule(random));
        ASSERT_TRUE(joinedLines(file).empty()) << file;
        ASSERT_EQ(rescuedText(file), file);
    }
}

TEST(JoinedLines, NeverInventAClassOrTypeInAnyBytes)
{
    test::RandomRules random(53);
    const std::vector<std::string> pieces{"allow ", "deny ", "watch ", "err ", "path ", "prefix ", "suffix ",
        "\"", "\" \"", " ", "\n", "\r", "/a", "any", "rw", "\xE6", "\xC3\xA9", ";", "147",
        "deny path \"/a\" ", "watch path \"/a\" \"any\" rw "};
    std::size_t found = 0;
    for (int round = 0; round < 10000; ++round) {
        std::string text;
        for (std::size_t left = random.below(40); left > 0; --left)
            text += random.oneOf(pieces);
        for (const JoinedLine& line : joinedLines(text)) {
            ++found;
            ASSERT_GT(line.rules.size(), 1U) << text;
            for (std::size_t i = 1; i < line.rules.size(); ++i) {
                ASSERT_NE(askValue(line.rules[i].rule, [](const auto& rule) { return rule.policyType; }), 4)
                    << text;
                const auto* policy = std::get_if<PolicyValue>(&line.rules[i].rule);
                ASSERT_TRUE(policy == nullptr || (*policy)->policyClass != 4) << text;
            }
        }
    }
    EXPECT_GT(found, 100U);
}

} // namespace quorvane::rules
