#include "rules/RuleLine.h"

#include "platform/NumberText.h"
#include "platform/Unicode.h"
#include "rules/LineTokenizer.h"
#include "rules/LineWalker.h"
#include "rules/RuleCodes.h"

#include <algorithm>
#include <optional>

namespace quorvane::rules {

namespace {

constexpr std::string_view watchWord = "watch";
constexpr std::string_view optionWord = "set";
constexpr std::size_t leastRuleTokens = 5;
constexpr std::size_t leastOptionTokens = 3;

// Reads the tokens after the first one that both rule kinds share.
template <class Fields>
void readCommonTokens(Fields& rule, const std::vector<std::string_view>& tokens, bool system, TextPool& pool)
{
    rule.policyType = policyTypeForString(tokens[1]);
    rule.path = NullableText(tokens[2]);
    rule.processName = pool.text(tokens[3]);
    rule.operations = operationsForString(tokens[4]);
    rule.system = system;
    if (tokens.size() < 6)
        return;
    if (system)
        rule.flags = flagsForString(tokens[5]);
    else
        rule.tag = pool.text(tokens[5]);
}

// Appends a line to a text. The text is resized once for the whole line and trimmed at the end: a line has
// twenty pieces, and a capacity check for each would take longer than the copying.
class LineWriting {
public:
    // For a rule with these fields.
    template <class Fields>
    LineWriting(std::string& out, const Fields& rule)
        : m_out(out)
        , m_length(out.size())
    {
        constexpr std::size_t mostBesidesTexts = 64; // words, letters, a number and separators
        out.resize(out.size() + mostBesidesTexts + rule.path.written().size()
            + rule.processName.written().size() + rule.tag.written().size() + constraintOf(rule).size());
    }
    LineWriting(const LineWriting&) = delete;
    LineWriting& operator=(const LineWriting&) = delete;
    ~LineWriting() { m_out.resize(m_length); }

    LineWriting& add(std::string_view text)
    {
        text.copy(m_out.data() + m_length, text.size());
        m_length += text.size();
        return *this;
    }
    LineWriting& addQuoted(std::string_view text) { return add(" \"").add(text).add("\""); }
    LineWriting& addQuotedWithoutQuotes(std::string_view text)
    {
        add(" \"");
        char* const end = std::remove_copy(text.begin(), text.end(), m_out.data() + m_length, '"');
        m_length = static_cast<std::size_t>(end - m_out.data());
        return add("\"");
    }

private:
    static std::string_view constraintOf(const PolicyRuleFields& rule) { return rule.constraint.written(); }
    static std::string_view constraintOf(const WatchRuleFields& /*rule*/) { return {}; }

    std::string& m_out;
    std::size_t m_length;
};

// The fields after the first one, up to the tag.
template <class Fields> void addCommonFields(LineWriting& line, const Fields& rule)
{
    line.add(" ").add(policyTypeDescription(rule.policyType));
    line.addQuoted(rule.path.written()).addQuoted(rule.processName.written());
    line.add(" ").add(operationsDescription(static_cast<std::int32_t>(rule.operations)));
    line.addQuotedWithoutQuotes(rule.tag.written());
}

std::string withoutQuotes(const NullableText& text)
{
    std::string plain(text.written());
    std::erase(plain, '"');
    return plain;
}

// True for text that always reads back as written. Checks all bytes without an early exit, so that the
// compiler can vectorize the loop.
bool isPlain(const NullableText& text)
{
    unsigned char anyOdd = 0; // as wide as a byte of text, since a bool would be widened in each step
    for (const char letter : text.view())
        anyOdd |= static_cast<unsigned char>(letter < ' ' || letter > '~' || letter == '"');
    return anyOdd == 0 && !text.isNull() && !text.view().ends_with(' ');
}

// Most rules are plain, so that reading back what would be written is not needed to see that they survive it.
template <class Fields> bool isPlain(const Fields& rule)
{
    constexpr std::uint32_t writtenOperations = 31;
    return isPlain(rule.path) && isPlain(rule.processName) && isPlain(rule.tag) && rule.operations != 0
        && rule.operations <= writtenOperations && rule.policyType >= PolicyType::prefix
        && rule.policyType <= PolicyType::suffix;
}

// The tokens read back from what `line` leaves in a file; none when that is not exactly one line.
std::optional<std::vector<std::string>> tokensReadBack(std::string_view line, LineEnds lineEnds)
{
    // Both damage more than this line: the reader stops at a NUL and reads nothing from a file that is not
    // UTF-8.
    const std::string_view written = lineEnds == LineEnds::cut ? writtenPart(line) : line;
    if (line.find('\0') != std::string_view::npos || !platform::isValidUtf8(written))
        return std::nullopt;
    LineWalker lines(written);
    const auto first = lines.next();
    const auto second = lines.next();
    if (!first || !second || !second->empty() || lines.next())
        return std::nullopt;
    return scanString(*first);
}

template <class Fields> bool sameCommonFields(const Fields& a, const Fields& b)
{
    return a.policyType == b.policyType && equalNonNull(a.path, b.path)
        && equalNonNull(a.processName, b.processName) && a.operations == b.operations && !a.tag.isNull()
        && withoutQuotes(a.tag) == withoutQuotes(b.tag);
}

} // namespace

LineKind kindOfLine(const std::vector<std::string_view>& tokens, bool optionsAllowed)
{
    if (tokens.size() >= leastRuleTokens && tokens[0] == watchWord)
        return LineKind::watchRule;
    if (optionsAllowed && tokens.size() >= leastOptionTokens && tokens[0] == optionWord)
        return LineKind::option;
    return tokens.size() >= leastRuleTokens ? LineKind::policyRule : LineKind::unusable;
}

WatchRuleFields watchRuleFromTokens(const std::vector<std::string_view>& tokens, bool system, TextPool& pool)
{
    WatchRuleFields rule;
    readCommonTokens(rule, tokens, system, pool);
    return rule;
}

PolicyRuleFields policyRuleFromTokens(
    const std::vector<std::string_view>& tokens, bool system, TextPool& pool)
{
    PolicyRuleFields rule;
    rule.policyClass = policyClassForString(tokens[0]);
    readCommonTokens(rule, tokens, system, pool);
    if (tokens.size() > 6)
        rule.constraint = pool.text(tokens[6]);
    if (tokens.size() > 7)
        rule.created = static_cast<std::uint64_t>(platform::leadingInteger(tokens[7]));
    return rule;
}

FilterOption optionFromTokens(const std::vector<std::string_view>& tokens)
{
    return {NullableText(tokens[1]), static_cast<std::uint32_t>(platform::leadingInteger(tokens[2]))};
}

void appendRuleLine(std::string& out, const WatchRuleFields& rule)
{
    LineWriting line(out, rule);
    line.add(watchWord);
    addCommonFields(line, rule);
    line.add("\n");
}

void appendRuleLine(std::string& out, const PolicyRuleFields& rule)
{
    LineWriting line(out, rule);
    line.add(policyClassDescription(rule.policyClass));
    addCommonFields(line, rule);
    line.addQuoted(rule.constraint.written());
    line.addQuoted(std::to_string(static_cast<std::int64_t>(rule.created)));
    line.add("\n");
}

std::string ruleLine(const WatchRuleFields& rule)
{
    std::string line;
    appendRuleLine(line, rule);
    return line;
}

std::string ruleLine(const PolicyRuleFields& rule)
{
    std::string line;
    appendRuleLine(line, rule);
    return line;
}

std::string_view writtenPart(std::string_view line)
{
    return line.substr(0, platform::utf16Length(line));
}

bool readsBackAsWritten(const WatchRuleFields& rule, LineEnds lineEnds)
{
    if (isPlain(rule))
        return true;
    const auto tokens = tokensReadBack(ruleLine(rule), lineEnds);
    if (!tokens)
        return false;
    const std::vector<std::string_view> views(tokens->begin(), tokens->end());
    TextPool pool(1);
    return kindOfLine(views, false) == LineKind::watchRule
        && sameCommonFields(rule, watchRuleFromTokens(views, false, pool));
}

bool readsBackAsWritten(const PolicyRuleFields& rule, LineEnds lineEnds)
{
    if (isPlain(rule) && isPlain(rule.constraint) && rule.policyClass >= PolicyClass::allow
        && rule.policyClass <= PolicyClass::deny)
        return true;
    const auto tokens = tokensReadBack(ruleLine(rule), lineEnds);
    if (!tokens)
        return false;
    const std::vector<std::string_view> views(tokens->begin(), tokens->end());
    TextPool pool(1);
    if (kindOfLine(views, false) != LineKind::policyRule)
        return false;
    const PolicyRuleFields read = policyRuleFromTokens(views, false, pool);
    return rule.policyClass == read.policyClass && sameCommonFields(rule, read)
        && equalNonNull(rule.constraint, read.constraint) && rule.created == read.created;
}

} // namespace quorvane::rules
