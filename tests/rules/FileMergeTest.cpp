#include "rules/FileMerge.h"

#include "rules/FileDifference.h"
#include "rules/FileLines.h"
#include "rules/RuleIdentity.h"
#include "rules/RulesText.h"
#include "tests/rules/RuleLists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <set>
#include <string>

namespace quorvane::rules {

namespace {

// "a", "a:tag" or "a:tag@7": the written line of a rule; "w…" is a watch rule. Anything that begins with ";"
// or "-" is literal text. Lines are separated by "|".
std::string namedLine(const std::string& name)
{
    if (name.empty() || name.starts_with(';') || name.starts_with('-'))
        return name + "\n";
    return askValue(test::namedRule(name), [](const auto& fields) { return ruleLine(fields); });
}

std::string file(const std::string& names)
{
    std::string text;
    for (std::size_t at = 0; at < names.size();) {
        const std::size_t end = std::min(names.find('|', at), names.size());
        text += namedLine(names.substr(at, end - at));
        at = end + 1;
    }
    return text;
}

std::optional<RuleValue> ruleIn(std::string_view line)
{
    static RuleReader reader;
    return reader.ruleOf(line);
}

std::string nameOfLine(const std::string& text)
{
    const auto rule = ruleIn(text);
    return rule && namedLine(test::nameOf(*rule)) == text + "\n" ? test::nameOf(*rule) : text;
}

std::string namesOfFile(const std::string& text)
{
    std::string names;
    for (const FileLine& line : fileLines(text))
        names += nameOfLine(std::string(line.text)) + "|";
    return names.substr(0, names.empty() ? 0 : names.size() - 1);
}

std::string merged(const std::string& base, const std::string& ours, const std::string& theirs)
{
    return namesOfFile(mergeFiles(file(base), file(ours), file(theirs)).text);
}

std::string conflicts(const std::string& base, const std::string& ours, const std::string& theirs)
{
    std::string texts;
    for (const FileConflict& conflict : mergeFiles(file(base), file(ours), file(theirs)).conflicts) {
        if (const auto* rule = std::get_if<MergeReport>(&conflict)) {
            constexpr const char* kinds[] = {"tag: ", "kept: ", "added: "};
            texts
                += kinds[rule->kind] + test::nameOf(rule->kept) + " not " + test::nameOf(rule->other) + "; ";
        } else {
            const auto& text = std::get<TextConflict>(conflict);
            constexpr const char* kinds[] = {"text: ", "kept text: "};
            texts += kinds[text.kind] + text.kept + " not " + text.other + "; ";
        }
    }
    return texts;
}

std::string mergedText(const std::string& base, const std::string& ours, const std::string& theirs)
{
    return mergeFiles(base, ours, theirs).text;
}

const std::string ruleA = "allow prefix \"a\" \"any\" r \"\" \"\" \"0\"";

} // namespace

// --- Rules

TEST(FileMerge, AddsWhatEitherSideAdds)
{
    EXPECT_EQ(merged("a|b", "a|x|b", "a|b|y"), "a|x|b|y");
    EXPECT_EQ(merged("a|b", "a|x|b", "a|x|b"), "a|x|b");
    EXPECT_EQ(merged("", "a|b", "b|c"), "a|b|c");
    EXPECT_EQ(conflicts("", "a|b", "b|c"), "");
}

TEST(FileMerge, RemovesWhatEitherSideRemoves)
{
    EXPECT_EQ(merged("a|b|c", "b|c", "a|b"), "b");
    EXPECT_EQ(merged("a|b", "", "a|b"), "");
    EXPECT_EQ(conflicts("a|b|c", "b|c", "a|b"), "");
}

TEST(FileMerge, PutsWhatTheirsAddsBehindTheLineBeforeItThatIsInTheResult)
{
    EXPECT_EQ(merged("a|b|c", "a|b|c", "a|x|b|c"), "a|x|b|c");
    EXPECT_EQ(merged("a|b|c", "c|a|b", "a|x|b|c"), "c|a|x|b");
    EXPECT_EQ(merged("a|b|c", "a|c", "a|b|x|c"), "a|x|c"); // behind b, which is removed: so behind a
    EXPECT_EQ(merged("a|b", "a|o|b", "a|x|b"), "a|x|o|b"); // directly behind
    EXPECT_EQ(merged("; t|a", "; t|a", "; t|x|a"), "; t|x|a"); // a text is a line as well
}

TEST(FileMerge, PutsARuleBeforeEverythingAtTheEndOfItsKind)
{
    EXPECT_EQ(merged("a|w1|b|;end", "a|w1|b|;end", "x|a|w1|b|;end"), "a|w1|b|x|;end");
    EXPECT_EQ(merged("a|w1|b", "a|w1|b", "w2|a|w1|b"), "a|w1|w2|b");
    EXPECT_EQ(merged("w1|;end", "w1|;end", "x|w1|;end"), "w1|;end|x");
    EXPECT_EQ(merged(";top|a", ";top|a", "w1|;top|a"), "w1|;top|a");
    EXPECT_EQ(merged("", "", "x|w1|y"), "x|w1|y");
}

TEST(FileMerge, TakesATagThatOneSideAloneHasSet)
{
    EXPECT_EQ(merged("a|b", "a:t|b", "a|b:u"), "a:t|b:u");
    EXPECT_EQ(merged("a:t", "a", "a:t"), "a");
    EXPECT_EQ(conflicts("a|b", "a:t|b", "a|b:u"), "");
}

TEST(FileMerge, KeepsOurTagWhereBothHaveSetAnother)
{
    EXPECT_EQ(merged("a", "a:t", "a:u"), "a:t");
    EXPECT_EQ(conflicts("a", "a:t", "a:u"), "tag: a:t not a:u; ");
    EXPECT_EQ(conflicts("a", "a:t", "a:t"), "");
    EXPECT_EQ(conflicts("a:x", "a", "a:u"), "tag: a not a:u; ");
}

TEST(FileMerge, KeepsARemovedRuleWhoseTagTheOtherSideHasSet)
{
    EXPECT_EQ(merged("a|b", "b", "a:t|b"), "b|a:t");
    EXPECT_EQ(conflicts("a|b", "b", "a:t|b"), "kept: a:t not a; ");
    EXPECT_EQ(merged("a|b", "a:t|b", "b"), "a:t|b");
    EXPECT_EQ(conflicts("a|b", "a:t|b", "b"), "kept: a:t not a; ");
}

TEST(FileMerge, KeepsOurTagOfARuleThatBothAdd)
{
    EXPECT_EQ(merged("", "a:t", "a:u"), "a:t");
    EXPECT_EQ(conflicts("", "a:t", "a:u"), "added: a:t not a:u; ");
}

TEST(FileMerge, NeverDisagreesOnCreationTimes)
{
    EXPECT_EQ(merged("a@1", "a@1", "a@2"), "a@2");
    EXPECT_EQ(merged("a@1", "a@3", "a@2"), "a@3");
    EXPECT_EQ(merged("a@1", "a:t@1", "a@2"), "a:t@2");
    EXPECT_EQ(merged("", "a@3", "a@2"), "a@3");
    EXPECT_EQ(merged("a@1", "", "a@2"), "");
    EXPECT_EQ(conflicts("a@1", "a@3", "a@2") + conflicts("", "a@3", "a@2") + conflicts("a@1", "", "a@2"), "");
}

TEST(FileMerge, MergesARuleThatStandsTwiceByItsFirstLine)
{
    EXPECT_EQ(merged("a:x|a:y", "a:x|a:y", "a:y"),
        "a:y"); // the last one is removed, the first is taken from theirs
    EXPECT_EQ(merged("a|b", "a|b|a:y", "a|b|a:z"), "a|b|a:y");
    EXPECT_EQ(conflicts("a|b", "a|b|a:y", "a|b|a:z"), "");
    EXPECT_EQ(merged("a|b", "a|b|a:y", "a:u|b"), "a:u|b|a:y");
    EXPECT_EQ(merged("a|b|a:y", "a|b|a:z", "a|b"), "a|b");
    EXPECT_EQ(merged("c|a:x", "c|a:x", "c|b|a:y|a:x"), "c|b|a:y|a:x");
    EXPECT_EQ(merged("c|b|a:x", "c|b|a:x", "a:y|c|a:x|b"), "c|b|a:y|a:x")
        << "the first of theirs stays the first";
}

TEST(FileMerge, RemovesTheLastOfEqualRulesAlsoWhereTheOtherSideHasAddedSome)
{
    EXPECT_EQ(merged("a", "a@2|b|a:y|a", "b"), "a@2|b|a:y");
    EXPECT_EQ(conflicts("a", "a@2|b|a:y|a", "b"), "");
    EXPECT_EQ(merged("a", "b", "a@2|b|a:y|a"), "b|a@2|a:y");
    EXPECT_EQ(merged("a", "a:x|a:y", ""), "a:x|a:y");
    EXPECT_EQ(conflicts("a", "a:x|a:y", ""), "kept: a:x not a; ");
    EXPECT_EQ(merged("a|a", "a|a|a|b", "b"), "a|b");
}

// --- Bytes

TEST(FileMerge, KeepsALineThatNobodyChangedByteForByte)
{
    const std::string odd = "allow  prefix a any xr work at home ; or so\n";
    EXPECT_EQ(mergedText(odd + file("b"), odd + file("b|c"), odd + file("b|d")), odd + file("b|d|c"));
}

TEST(FileMerge, TakesASpellingThatOneSideAloneHasChanged)
{
    const std::string plain = "allow prefix a any r\n";
    EXPECT_EQ(mergedText(plain, ruleA + "\n", plain), ruleA + "\n");
    EXPECT_EQ(mergedText(plain, plain, ruleA + "\n"), ruleA + "\n");
    EXPECT_EQ(mergedText("", plain, ruleA + "\n"), plain);
}

TEST(FileMerge, WritesALineAnewThatBothHaveChangedWithItsLineEnd)
{
    EXPECT_EQ(mergedText("allow prefix a any r\r\n", "allow prefix \"a\" any r\r\n",
                  "allow prefix a any r work\r\n"),
        "allow prefix \"a\" \"any\" r \"work\" \"\" \"0\"\r\n");
    // Non-ASCII characters do not cut it.
    EXPECT_EQ(mergedText("allow prefix \u00e4 any r\n", "allow prefix \"\u00e4\" any r\n",
                  "allow prefix \u00e4 any r \u00f6\n"),
        "allow prefix \"\u00e4\" \"any\" r \"\u00f6\" \"\" \"0\"\n");
}

TEST(FileMerge, KeepsTheLinesOfOursWhereBothHaveSpeltThemAnew)
{
    EXPECT_EQ(
        mergedText("allow prefix a any r\n", "allow prefix \"a\" any r\n", "allow prefix a \"any\" r\n"),
        "allow prefix \"a\" any r\n");
}

TEST(FileMerge, EndsAddedLinesAsTheFirstLineOfOurs)
{
    EXPECT_EQ(mergedText("; 1\r\n; 2\n", "; 1\r\n; 2\n", "; 1\r\n; 2\n; 3\n"), "; 1\r\n; 2\n; 3\r\n");
    EXPECT_EQ(mergedText("; 1\r\n", "", "; 1\r\n; 3\n"), "; 3\r\n"); // else of the base
    EXPECT_EQ(mergedText("", "", "; 3\r\n"), "; 3\n"); // else a line feed
    EXPECT_EQ(mergedText("; 1\xE2\x80\xA8", "; 1\xE2\x80\xA8", "; 1\xE2\x80\xA8; 2"),
        "; 1\xE2\x80\xA8; 2\xE2\x80\xA8");
}

TEST(FileMerge, EndsALineThatLacksItsEndWhenAnotherComesBehindIt)
{
    EXPECT_EQ(mergedText("; 1\n; 2", "; 1\n; 2", "; 1\n; 2\n; 3"), "; 1\n; 2\n; 3\n");
    EXPECT_EQ(mergedText("; 1\n; 2", "; 0\n; 1\n; 2", "; 1\n; 2"), "; 0\n; 1\n; 2");
    EXPECT_EQ(mergedText("; 1\n", "; 1\n; 2", "; 1\n; 3\n"), "; 1\n; 2\n; 3\n");
}

TEST(FileMerge, TakesLineEndsThatOneSideAloneHasChanged)
{
    EXPECT_EQ(mergedText("; 1\n; 2\n", "; 1\n; 2\n", "; 1\r\n; 2\r\n"), "; 1\r\n; 2\r\n");
    EXPECT_EQ(mergedText("; 1\n; 2\n", "; 1\r\n; 2\r\n", "; 1\n; 3\n"), "; 1\r\n; 3\r\n");
}

// --- Text

TEST(FileMerge, MergesCommentsOptionsEmptyJoinedAndUnreadableLinesAsText)
{
    const std::string joined
        = "allow prefix \"\u00e4\" \"any\" r \"\" \"allow prefix \"b\" \"any\" r \"\" \"\" \"0\"";
    ASSERT_FALSE(ruleIn(joined));
    for (const std::string& line : {std::string("; comment"), std::string("set policy.global.exec 1"),
             std::string("set a b c d e"), std::string("three words only"), joined,
             std::string("this line is prose of more words"), std::string("allow prefix a any -")}) {
        const std::string changed = line + " more";
        EXPECT_EQ(mergedText(file("a|b"), file("a|b"), file("a") + line + "\n" + file("b")),
            file("a") + line + "\n" + file("b"));
        EXPECT_EQ(
            mergedText(line + "\n" + file("a|b"), file("a|b"), line + "\n" + file("a|b|c")), file("a|b|c"));
        EXPECT_EQ(mergedText(line + "\n" + file("a"), line + "\n" + file("a"), changed + "\n" + file("a")),
            changed + "\n" + file("a"));
    }
}

TEST(FileMerge, KeepsOurTextWhereBothHaveChangedOne)
{
    EXPECT_EQ(merged("a|; text|b", "a|; ours|b", "a|; theirs|b"), "a|; ours|b");
    EXPECT_EQ(conflicts("a|; text|b", "a|; ours|b", "a|; theirs|b"), "text: ; ours not ; theirs; ");
    EXPECT_EQ(conflicts("a|; text|b", "a|; same|b", "a|; same|b"), "");
    EXPECT_EQ(merged("a|; text|b", "a|; same|b", "a|; same|b"), "a|; same|b");
}

TEST(FileMerge, KeepsBothTextsThatAreAddedInOnePlaceOursFirst)
{
    EXPECT_EQ(merged("a|b", "a|; ours|b", "a|; theirs|b"), "a|; ours|; theirs|b");
    EXPECT_EQ(conflicts("a|b", "a|; ours|b", "a|; theirs|b"), "");
    EXPECT_EQ(merged("a|b", "a|; same|b", "a|; same|b"), "a|; same|b");
    EXPECT_EQ(merged("a", "; ours|a", "; theirs|a"), "; ours|; theirs|a");
    EXPECT_EQ(merged("a", "a|; ours", "a|; theirs"), "a|; ours|; theirs");
    EXPECT_EQ(merged("", "; ours", "; theirs"), "; ours|; theirs");
}

TEST(FileMerge, PutsTextThatTheirsAddsAtTheTopAtTheTop)
{
    EXPECT_EQ(merged("a|b", "b|a", "; top|a|b"), "; top|b|a");
    EXPECT_EQ(merged("; t|a", "; t|a", "; top|; t|a"), "; top|; t|a");
}

TEST(FileMerge, KeepsATextThatOneSideChangedAndTheOtherRemoved)
{
    EXPECT_EQ(merged("a|; text|b", "a|; ours|b", "a|b"), "a|; ours|b");
    EXPECT_EQ(conflicts("a|; text|b", "a|; ours|b", "a|b"), "kept text: ; ours not ; text; ");
    EXPECT_EQ(merged("a|; text|b", "a|b", "a|; theirs|b"), "a|; theirs|b");
    EXPECT_EQ(conflicts("a|; text|b", "a|b", "a|; theirs|b"), "kept text: ; theirs not ; text; ");
}

TEST(FileMerge, KnowsATextThatHasMoved)
{
    EXPECT_EQ(merged("; t|a|b|c", "a|b|c|; t", "; t|a|b|c|d"), "a|b|c|d|; t");
    EXPECT_EQ(merged("; t|a|b|c", "a|b|c|; t", "a|b|c"), "a|b|c");
}

TEST(FileMerge, TellsEmptyLinesApartByTheirPlace)
{
    EXPECT_EQ(merged("a||b||c", "a||b||c||d", "a|||b||c"), "a|||b||c||d");
    EXPECT_EQ(merged("a||b||c", "a|b||c", "a||b|c"), "a|b|c");
    EXPECT_EQ(
        merged("a||b", "a|; ours|b", "a|; theirs|b"), "a|; ours|; theirs|b"); // neither side changed a line
    EXPECT_EQ(conflicts("a||b", "a|; ours|b", "a|; theirs|b"), "");
}

TEST(FileMerge, KeepsCommentsBesideTheirRules)
{
    EXPECT_EQ(merged("; one|a||; two|b", "; one|a|a2||; two|b", "; one|a||; three|c||; two|b|b2"),
        "; one|a|a2||; three|c||; two|b|b2");
    EXPECT_EQ(merged("; one|a|; two|b", "; one|a", "; one|a2|; two|b"), "; one|a2");
}

// --- Properties

namespace {

std::string randomFile(test::RandomRules& random, std::size_t most)
{
    const std::vector<std::string> lines{namedLine("a"), namedLine("a:x"), namedLine("b@1"), namedLine("b@2"),
        namedLine("c:y"), namedLine("w1"), namedLine("w1:z"), namedLine("w2"), "allow prefix d any r\n",
        "allow prefix \"d\" any r\n", "allow prefix e any rw \u00e4\r\n", "; one\n", "; one\r\n", "; two\n",
        "\n", "\n", "\r\n", "set x 1\n", "some prose of five words here\n",
        "deny prefix \"\u00e4\" \"any\" r \"\" \"\" \"allow path \"z\" \"any\" r \"\" \"\" \"0\"\n",
        "; two\xE2\x80\xA9", "allow prefix f any r tag\x0B"};
    std::string text;
    for (std::size_t left = random.below(most + 1); left > 0; --left)
        text += random.oneOf(lines);
    return random.below(4) == 0 ? text + "; last" : text;
}

// `text` after some changes of one side.
std::string editedFile(test::RandomRules& random, const std::string& text)
{
    std::string edited;
    for (const FileLine& line : fileLines(text)) {
        const std::size_t what = random.below(8);
        if (what == 0)
            edited += randomFile(random, 2);
        if (what != 1)
            edited.append(line.text).append(line.end);
        else if (random.below(2) == 0)
            edited += "; changed " + std::to_string(random.below(3)) + "\n";
    }
    return edited + randomFile(random, 1);
}

std::multiset<std::string> linesIn(const std::string& text)
{
    std::multiset<std::string> lines;
    for (const FileLine& line : fileLines(text))
        lines.insert(std::string(line.text));
    return lines;
}

bool standsOnALine(const std::string& text, const RuleValue& rule)
{
    const std::vector<FileLine> lines = fileLines(text);
    return std::any_of(lines.begin(), lines.end(), [&](const FileLine& line) {
        const auto other = ruleIn(line.text);
        return other && isEqualRule(*other, rule);
    });
}

bool hasEqual(const test::RuleValues& rules, const RuleValue& rule)
{
    return std::any_of(
        rules.begin(), rules.end(), [&](const RuleValue& other) { return isEqualRule(rule, other); });
}

} // namespace

TEST(FileMergeOfAnyFiles, ChangesNothingWhereOneSideHasNotChangedAnything)
{
    test::RandomRules random(11);
    for (int round = 0; round < 300; ++round) {
        const std::string base = randomFile(random, 12);
        const std::string ours = editedFile(random, base);
        ASSERT_EQ(mergedText(ours, ours, ours), ours);
        ASSERT_EQ(mergedText(base, ours, base), ours);
        ASSERT_EQ(mergedText(base, ours, ours), ours);
        ASSERT_EQ(mergedText("", ours, ours), ours);
        ASSERT_EQ(mergedText("", ours, ""), ours);
    }
}

TEST(FileMergeOfAnyFiles, TakesAllThatTheirsHasDoneWhereOursHasDoneNothing)
{
    test::RandomRules random(12);
    for (int round = 0; round < 300; ++round) {
        const std::string base = randomFile(random, 12);
        const std::string theirs = editedFile(random, base);
        const FileMergeResult result = mergeFiles(base, base, theirs);
        ASSERT_TRUE(result.conflicts.empty()) << base << "----\n" << theirs;
        ASSERT_EQ(linesIn(result.text), linesIn(theirs)) << base << "----\n" << theirs;
        ASSERT_TRUE(fileDifference(theirs, result.text).isEmpty()) << base << "----\n" << theirs;
    }
}

TEST(FileMergeOfAnyFiles, InventsNoRuleAndLosesNoneThatBothHave)
{
    test::RandomRules random(13);
    for (int round = 0; round < 300; ++round) {
        const std::string base = randomFile(random, 10);
        const std::string ours = editedFile(random, base);
        const std::string theirs = editedFile(random, base);
        const std::string text = mergedText(base, ours, theirs);
        const test::RuleValues rules = rulesOfText(text);
        const test::RuleValues oursRules = rulesOfText(ours);
        const test::RuleValues theirsRules = rulesOfText(theirs);
        for (const RuleValue& rule : rules)
            ASSERT_TRUE(hasEqual(oursRules, rule) || hasEqual(theirsRules, rule)) << text;
        for (const FileLine& line : fileLines(ours)) {
            const auto rule = ruleIn(line.text);
            ASSERT_TRUE(!rule || !standsOnALine(theirs, *rule) || standsOnALine(text, *rule)) << text;
        }
    }
}

TEST(FileMergeOfAnyFiles, KeepsEveryLineThatStandsInAllThree)
{
    test::RandomRules random(14);
    for (int round = 0; round < 300; ++round) {
        const std::string base = randomFile(random, 10);
        const std::string ours = editedFile(random, base);
        const std::string theirs = editedFile(random, base);
        const auto oursLines = linesIn(ours);
        const auto theirsLines = linesIn(theirs);
        const auto lines = linesIn(mergedText(base, ours, theirs));
        for (const std::string& line : linesIn(base)) {
            const bool isSingle = linesIn(base).count(line) == 1 && oursLines.count(line) == 1
                && theirsLines.count(line) == 1;
            if (isSingle && !line.empty() && !ruleIn(line)) {
                ASSERT_EQ(lines.count(line), 1U) << line << "\n"
                                                 << base << "----\n"
                                                 << ours << "----\n"
                                                 << theirs;
            }
        }
    }
}

// The same rules as in a merge of lists, when each occurs once and there is nothing but rules.
TEST(FileMergeOfAnyFiles, ComesToTheRulesThatMergingListsComesTo)
{
    test::RandomRules random(15);
    const auto textOf = [](const test::RuleValues& rules) {
        std::string text;
        for (const RuleValue& rule : rules)
            text += namedLine(test::nameOf(rule));
        return text;
    };
    const auto singles = [](const test::RuleValues& rules) {
        test::RuleValues single;
        for (const RuleValue& rule : rules) {
            if (!hasEqual(single, rule))
                single.push_back(rule);
        }
        return single;
    };
    for (int round = 0; round < 300; ++round) {
        const test::RuleValues base = singles(randomRuleList(random, 6));
        const test::RuleValues ours = singles(randomRuleList(random, 6));
        const test::RuleValues theirs = singles(randomRuleList(random, 6));
        test::RuleValues expected;
        const MergeResult result = mergeRules(base, ours, theirs);
        for (const MergedRule& rule : result.rules)
            expected.push_back(rule.rule);
        const FileMergeResult file = mergeFiles(textOf(base), textOf(ours), textOf(theirs));
        ASSERT_EQ(file.text, textOf(expected));
        ASSERT_EQ(file.conflicts.size(), result.reports.size());
    }
}

TEST(FileDifference, IsThatOfTheRulesThatAStoreReads)
{
    test::RandomRules random(16);
    const auto linesOf = [](const RulesDifference& difference) {
        std::vector<std::string> lines;
        const auto add = [&lines](const char* what, const RuleValue& rule) {
            lines.push_back(what + askValue(rule, [](const auto& fields) { return ruleLine(fields); }));
        };
        for (const RuleValue& rule : difference.added)
            add("added ", rule);
        for (const RuleValue& rule : difference.removed)
            add("removed ", rule);
        for (const auto& [before, after] : difference.changed) {
            add("from ", before);
            add("to ", after);
        }
        return lines;
    };
    for (int round = 0; round < 300; ++round) {
        const std::string before = randomFile(random, 12);
        const std::string after = editedFile(random, before);
        ASSERT_EQ(linesOf(fileDifference(before, after)),
            linesOf(rulesDifference(rulesOfText(before), rulesOfText(after))))
            << before << "----\n"
            << after;
    }
}

TEST(FileDifference, IsCountedWithoutTheRules)
{
    test::RandomRules random(17);
    for (int round = 0; round < 300; ++round) {
        const std::string before = randomFile(random, 12);
        const std::string after = editedFile(random, before);
        const RulesDifference difference = rulesDifference(rulesOfText(before), rulesOfText(after));
        const FileDifferenceCounts counts = fileDifferenceCounts(before, after);
        ASSERT_EQ(counts.added, difference.added.size()) << before << "----\n" << after;
        ASSERT_EQ(counts.removed, difference.removed.size()) << before << "----\n" << after;
        ASSERT_EQ(counts.changed, difference.changed.size()) << before << "----\n" << after;
        ASSERT_EQ(counts.rulesAfter, rulesOfText(after).size()) << after;
    }
}

TEST(FileDifference, IsOfWhatAStoreReadsOfATextThatIsCutOrNoText)
{
    const std::string rule = "allow prefix \"/a\" any r\n";
    const std::string cut = rule + std::string(1, '\0') + "allow prefix \"/b\" any r\n";
    EXPECT_TRUE(fileDifference(rule, cut).isEmpty());
    EXPECT_EQ(fileDifferenceCounts(rule, cut).rulesAfter, 1U);
    EXPECT_EQ(fileDifference(rule, rule + "\xff").removed.size(), 1U);
    EXPECT_EQ(fileDifferenceCounts(rule, rule + "\xff").rulesAfter, 0U);
}

} // namespace quorvane::rules
