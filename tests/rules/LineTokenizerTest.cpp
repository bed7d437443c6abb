#include "rules/LineTokenizer.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace quorvane::rules {

namespace {

using Tokens = std::vector<std::string>;

// The simplest implementation: one run and its stopping character at a time.
Tokens plainWalk(const std::string& line)
{
    Tokens tokens;
    std::string held;
    bool inQuotes = false;
    std::size_t at = 0;
    while (true) {
        std::string run;
        while (at < line.size() && line[at] != ' ' && line[at] != '"')
            run += line[at++];
        if (at == line.size()) {
            if (!run.empty())
                tokens.push_back(run);
            return tokens;
        }
        if (line[at] == '"') {
            inQuotes = !inQuotes;
            if (run.empty()) {
                if (!inQuotes)
                    tokens.emplace_back();
            } else {
                held += run;
                tokens.push_back(held);
                held.clear();
            }
        } else if (run.empty()) {
            if (inQuotes)
                held += ' ';
        } else if (inQuotes) {
            held += run + ' ';
        } else {
            tokens.push_back(run);
        }
        ++at;
    }
}

} // namespace

TEST(ScanString, SplitsAtBlanksOutsideQuotes)
{
    const struct {
        const char* why;
        const char* line;
        Tokens tokens;
    } cases[] = {
        {"nothing", "", {}},
        {"blanks only", "   ", {}},
        {"words", "allow prefix /a", {"allow", "prefix", "/a"}},
        {"runs of blanks yield no empty tokens", "  a   b  ", {"a", "b"}},
        {"blanks in quotes stay", R"(a "b  c" d)", {"a", "b  c", "d"}},
        {"a blank at the front of a value stays", R"(" a" b)", {" a", "b"}},
        {"adjacent quotes give an empty field", R"(a "" b)", {"a", "", "b"}},
        {"only two quotes", R"("")", {""}},
        {"a path with a blank and an empty field", R"(watch prefix "/a b" "" r)",
            {"watch", "prefix", "/a b", "", "r"}},
        {"quotes need no blanks between them", R"("a""b")", {"a", "b"}},
        {"a word behind a closing quote is a token", R"("a"b c)", {"a", "b", "c"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(scanString(c.line), c.tokens) << c.why;
}

TEST(ScanString, AnOpenQuoteDropsWhatItHasCollectedButItsLastWord)
{
    const struct {
        const char* why;
        const char* line;
        Tokens tokens;
    } cases[] = {
        {"two words", R"(a "b c)", {"a", "c"}},
        {"many words", R"(a "b c d e)", {"a", "e"}},
        {"one word", R"(a "b)", {"a", "b"}},
        {"no word behind its last blank", R"(a "b )", {"a"}},
        {"nothing at all", R"(a ")", {"a"}},
        {"what moved in front of its words", R"("a " "b c)", {"", "c"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(scanString(c.line), c.tokens) << c.why;
}

TEST(ScanString, KeepsItsOddities)
{
    const struct {
        const char* why;
        const char* line;
        Tokens tokens;
    } cases[] = {
        {"a word before a quote is a token of its own", R"(abc"d e" f)", {"abc", "d e", "f"}},
        {"a value that ends in a blank is empty and moves on", R"("a " "b" c)", {"", "a b", "c"}},
        {"it moves in front of a word with a quote", R"("a " b"c")", {"", "a b", "c"}},
        {"it passes a word without quotes", R"("a " b "c")", {"", "b", "a c"}},
        {"it passes an empty value", R"("a " "" "c")", {"", "", "a c"}},
        {"blanks only are such a value", R"("  " "b")", {"", "  b"}},
        {"several of them gather", R"("a " "b " "c")", {"", "", "a b c"}},
        {"without another value it is lost", R"("a " b)", {"", "b"}},
        {"there is no escape", R"("a\"b")", {"a\\", "b"}},
        {"a tab is ordinary", "a\tb \"c\td\"", {"a\tb", "c\td"}},
        {"single quotes are ordinary", "'a b'", {"'a", "b'"}},
        {"other blanks are ordinary", "a\u00A0b c", {"a\u00A0b", "c"}},
        {"a byte order mark is ordinary", "\uFEFFallow prefix", {"\uFEFFallow", "prefix"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(scanString(c.line), c.tokens) << c.why;
}

TEST(ScanString, AgreesWithThePlainWalkOnRandomLines)
{
    std::mt19937 random(20240601);
    const std::string alphabet = "ab \"\" \t";
    for (int number = 0; number < 60000; ++number) {
        std::string line;
        for (std::size_t left = random() % 24; left > 0; --left)
            line += alphabet[random() % alphabet.size()];
        ASSERT_EQ(scanString(line), plainWalk(line)) << "line " << line;
    }
}

TEST(ScanString, AgreesWithThePlainWalkOnEveryShortLine)
{
    const std::string alphabet = "a \"";
    for (std::size_t length = 0; length <= 8; ++length) {
        std::size_t lines = 1;
        for (std::size_t power = 0; power < length; ++power)
            lines *= alphabet.size();
        for (std::size_t number = 0; number < lines; ++number) {
            std::string line;
            for (std::size_t rest = number; line.size() < length; rest /= alphabet.size())
                line += alphabet[rest % alphabet.size()];
            ASSERT_EQ(scanString(line), plainWalk(line)) << "line " << line;
        }
    }
}

TEST(ScanString, NoTokenHoldsAQuote)
{
    std::mt19937 random(7);
    const std::string alphabet = "x\"\" ";
    std::size_t tokens = 0;
    for (int number = 0; number < 2000; ++number) {
        std::string line;
        for (std::size_t left = random() % 30; left > 0; --left)
            line += alphabet[random() % alphabet.size()];
        for (const std::string& token : scanString(line)) {
            ++tokens;
            EXPECT_EQ(token.find('"'), std::string::npos) << line;
        }
    }
    EXPECT_GT(tokens, 1000U);
}

TEST(LineTokenizer, NothingOfALineReachesTheNext)
{
    LineTokenizer tokenizer;
    tokenizer.tokens(R"(a "b " "c)");

    const auto& tokens = tokenizer.tokens(R"(d "e" f)");

    EXPECT_EQ(Tokens(tokens.begin(), tokens.end()), (Tokens{"d", "e", "f"}));
}

} // namespace quorvane::rules
