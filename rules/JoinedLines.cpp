#include "rules/JoinedLines.h"

#include "platform/NumberText.h"
#include "platform/Unicode.h"
#include "rules/LineWalker.h"
#include "rules/RuleCodes.h"
#include "rules/RuleLine.h"

#include <algorithm>
#include <array>
#include <optional>

// How a line is split:
//
// A further rule is recognized by known words for class and type before a quote. So the scan goes from quote
// to quote through the fields of a rule and checks the words before each. Outside quotes they begin a further
// rule. Inside quotes they can also be the end of a field's own text ("… deny path "): they are if the rest
// of the line continues as the writer would have written it.

namespace quorvane::rules {

namespace {

constexpr auto npos = std::string_view::npos;

constexpr std::array<std::string_view, 3> knownClasses{"allow", "deny", "watch"};
constexpr std::array<std::string_view, 3> knownTypes{"prefix", "path", "suffix"};
constexpr std::string_view watchClass = "watch";
constexpr std::string_view unknownWord = "err"; // what the writer writes for an unknown class or type

// The fields after the type, in the order of the line; a watch rule has the first four.
enum Field : std::size_t { path, process, operations, tag, constraint, created, fieldCount };
constexpr std::size_t watchFieldCount = tag + 1;

std::size_t skipBlanks(std::string_view text, std::size_t at)
{
    return std::min(text.find_first_not_of(' ', at), text.size());
}

std::size_t endOfWord(std::string_view text, std::size_t at)
{
    return std::min(text.find_first_of(" \"", at), text.size());
}

template <class Words> bool isOneOf(const Words& words, std::string_view word)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

// The length of the word of `words` that `text` ends with; 0 for none.
template <class Words> std::size_t lengthOfLastWord(const Words& words, std::string_view text)
{
    const auto found
        = std::find_if(words.begin(), words.end(), [text](auto word) { return text.ends_with(word); });
    return found == words.end() ? 0 : found->size();
}

// The part of `text` before a final word of `words` and at least one blank; none without them.
template <class Words>
std::optional<std::string_view> beforeLastWord(const Words& words, std::string_view text)
{
    if (!text.ends_with(' '))
        return std::nullopt;
    const std::size_t end = text.find_last_not_of(' ') + 1; // 0 when there are only blanks
    const std::size_t length = lengthOfLastWord(words, text.substr(0, end));
    if (length == 0)
        return std::nullopt;
    return text.substr(0, end - length);
}

// Where the further rule begins whose path starts with the quote at `quote`, not before `from`; npos for
// none.
std::size_t furtherRuleBefore(std::string_view line, std::size_t from, std::size_t quote)
{
    const auto upToType = beforeLastWord(knownTypes, line.substr(from, quote - from));
    const auto upToClass = upToType ? beforeLastWord(knownClasses, *upToType) : std::nullopt;
    return upToClass ? from + upToClass->size() : npos;
}

// The beginning of a rule.
struct Head {
    std::string_view policyClass;
    std::string_view policyType;
    std::size_t length = 0;

    std::size_t fields() const { return policyClass == watchClass ? watchFieldCount : fieldCount; }
};

// The head at `at`; its class or type may be unknown to the writer.
std::optional<Head> headAt(std::string_view line, std::size_t at)
{
    const std::size_t classEnd = endOfWord(line, at);
    const std::size_t typeBegin = skipBlanks(line, classEnd);
    const std::size_t typeEnd = endOfWord(line, typeBegin);
    const Head head{
        line.substr(at, classEnd - at), line.substr(typeBegin, typeEnd - typeBegin), typeEnd - at};
    const bool known = (head.policyClass == unknownWord || isOneOf(knownClasses, head.policyClass))
        && (head.policyType == unknownWord || isOneOf(knownTypes, head.policyType));
    return known ? std::optional(head) : std::nullopt;
}

// Where a further rule begins at `at` or after blanks; npos for none.
std::size_t furtherRuleBehind(std::string_view line, std::size_t at)
{
    const std::size_t begin = skipBlanks(line, at);
    const std::size_t quote = line.find('"', begin);
    const bool isThere
        = quote != npos && quote + 1 < line.size() && furtherRuleBefore(line, begin, quote) == begin;
    return isThere ? begin : npos;
}

// True when after the closing quote of field `field` the line continues exactly as the writer writes it, to
// its end or to a further rule.
bool continuesAsWritten(std::string_view line, std::size_t at, std::size_t field, std::size_t fields)
{
    while (++field < fields) {
        if (at == line.size())
            return field > tag; // fields after the tag are optional
        if (line[at++] != ' ')
            return false;
        if (field == operations) {
            at = std::min(line.find_first_not_of("rwcmx", at), line.size());
            continue;
        }
        const std::size_t close = at < line.size() && line[at] == '"' ? line.find('"', at + 1) : npos;
        if (close == npos)
            return false;
        at = close + 1;
    }
    return at == line.size() || furtherRuleBehind(line, at) == at;
}

std::size_t countWords(std::string_view text)
{
    std::size_t words = 0;
    for (std::size_t at = skipBlanks(text, 0); at < text.size(); at = skipBlanks(text, endOfWord(text, at)))
        ++words;
    return words;
}

// Where the rule joined to the one at `begin` begins; npos for none.
std::size_t nextJoin(std::string_view line, std::size_t begin, const Head& head)
{
    const std::size_t fields = head.fields();
    std::size_t at = begin + head.length;
    for (std::size_t field = path; field < fields; ++field) {
        const std::size_t open = line.find('"', at);
        if (open == npos || open + 1 == line.size())
            return npos;
        const std::size_t outside = furtherRuleBefore(line, at, open);
        field += countWords(line.substr(at, std::min(outside, open) - at));
        if (outside != npos) // words after the last field are ignored, whatever follows them
            return field > path && field <= fields ? outside : npos;
        if (field >= fields)
            return npos;
        const std::size_t close = line.find('"', open + 1);
        if (close == npos || close + 1 == line.size())
            return npos;
        const std::size_t inside = furtherRuleBefore(line, open + 1, close);
        if (inside != npos && !continuesAsWritten(line, close + 1, field, fields))
            return inside;
        at = close + 1;
    }
    return furtherRuleBehind(line, at);
}

// The text of a field as far as it has survived.
struct FieldText {
    std::string_view text;
    bool isWhole = false;
};

// `text` without an incomplete character at its end.
std::string_view withoutCutLetter(std::string_view text)
{
    constexpr std::size_t longestBeginning = 3;
    for (std::size_t length = 1; length <= std::min(longestBeginning, text.size()); ++length) {
        const auto byte = static_cast<unsigned char>(text[text.size() - length]);
        if (byte >= 0x80 && byte < 0xC0)
            continue;
        return byte >= 0xC0 && !platform::isValidUtf8(text.substr(text.size() - length))
            ? text.substr(0, text.size() - length)
            : text;
    }
    return text;
}

// The usable part of a cut text. Trailing blanks are dropped, since the format cannot represent them.
std::string_view keptOfCut(std::string_view text)
{
    const std::string_view letters = withoutCutLetter(text);
    return letters.substr(0, letters.find_last_not_of(' ') + 1);
}

// The fields of a rule after its head, at most `most`; only the last can be cut. Unless `isEndKnown`, an
// unquoted field at the end of the text may be incomplete.
std::vector<FieldText> fieldTexts(std::string_view rest, std::size_t most, bool isEndKnown)
{
    std::vector<FieldText> fields;
    for (std::size_t at = skipBlanks(rest, 0); at < rest.size() && fields.size() < most;) {
        const bool quoted = rest[at] == '"';
        at += quoted ? 1 : 0;
        const std::size_t end = quoted ? rest.find('"', at) : endOfWord(rest, at);
        const bool isWhole = end < rest.size() || (!quoted && isEndKnown);
        const std::string_view text = rest.substr(at, end - at);
        fields.push_back({isWhole ? text : keptOfCut(text), isWhole});
        at = isWhole ? skipBlanks(rest, quoted ? end + 1 : end) : rest.size();
    }
    return fields;
}

// The text of one rule in a line.
struct RuleText {
    std::string_view text;
    Head head;
    bool isEndKnown; // a line end follows
    std::vector<FieldText> fields;

    RuleText(std::string_view ruleText, bool endsItsLine)
        : text(ruleText)
        , head(*headAt(ruleText, 0))
        , isEndKnown(endsItsLine)
        , fields(fieldTexts(ruleText.substr(head.length), head.fields(), endsItsLine))
    {
    }

    std::size_t wholeFields() const { return fields.back().isWhole ? fields.size() : fields.size() - 1; }
    // From this field on the text is cut. Optional fields omitted before a line end are not.
    std::size_t firstCut() const
    {
        return isEndKnown && fields.back().isWhole ? head.fields() : wholeFields();
    }
    std::string_view field(std::size_t number) const
    {
        return number < fields.size() ? fields[number].text : std::string_view();
    }
};

template <class Fields> void setCommonFields(Fields& rule, const RuleText& text)
{
    rule.policyType = policyTypeForString(text.head.policyType);
    rule.path = text.field(path);
    rule.processName = text.field(process);
    rule.tag = text.field(tag);
    rule.operations = operationsForString(text.field(operations));
}

RuleValue ruleOf(const RuleText& text)
{
    if (text.head.policyClass == watchClass) {
        WatchRuleFields rule;
        setCommonFields(rule, text);
        return makeRuleValue(std::move(rule));
    }
    PolicyRuleFields rule;
    rule.policyClass = policyClassForString(text.head.policyClass);
    setCommonFields(rule, text);
    rule.constraint = text.field(constraint);
    if (created < text.firstCut())
        rule.created = static_cast<std::uint64_t>(platform::leadingInteger(text.field(created)));
    return makeRuleValue(std::move(rule));
}

std::vector<std::string_view> cutPropertiesOf(const RuleText& text)
{
    constexpr std::array<std::pair<Field, std::string_view>, fieldCount> properties{
        {{path, "path"}, {process, "processName"}, {tag, "tag"}, {constraint, "constraint"},
            {operations, "operations"}, {created, "created"}}};
    std::vector<std::string_view> cut;
    for (const auto& [field, name] : properties) {
        if (field >= text.firstCut() && field < text.head.fields())
            cut.push_back(name);
    }
    return cut;
}

// The rule as a separate line, without a line end.
std::string wholeLine(const RuleText& text)
{
    if (text.firstCut() == text.head.fields())
        return std::string(text.text);
    const RuleValue rule = ruleOf(text);
    const bool hasOperations = askValue(rule, [](const auto& fields) { return fields.operations != 0; });
    if (!hasOperations)
        return std::string(keptOfCut(text.text)).append(text.fields.back().isWhole ? "" : "\"");
    std::string line = askValue(rule, [](const auto& fields) { return ruleLine(fields); });
    line.pop_back(); // the line feed
    return line;
}

// Where the line end is known, a further rule counts only if it reads as one up to its operations.
bool readsAsRule(const RuleText& text)
{
    return !text.isEndKnown || text.wholeFields() > operations;
}

// The rules of a joined line; none when the line is not joined.
std::vector<RuleText> rulesOfLine(std::string_view line, bool isEndKnown)
{
    std::vector<std::size_t> begins;
    for (std::size_t begin = skipBlanks(line, 0); begin != npos;) {
        const auto head = headAt(line, begin);
        if (!head)
            return {};
        const std::size_t next = nextJoin(line, begin, *head);
        if (next == npos && begins.empty())
            return {}; // most lines: no list of one is made for them
        begins.push_back(begin);
        begin = next;
    }
    while (begins.size() > 1 && !readsAsRule({line.substr(begins.back()), isEndKnown}))
        begins.pop_back();
    std::vector<RuleText> rules;
    for (std::size_t i = 0; begins.size() > 1 && i < begins.size(); ++i) {
        const bool isLast = i + 1 == begins.size();
        const std::size_t end = isLast ? line.size() : begins[i + 1];
        rules.emplace_back(line.substr(begins[i], end - begins[i]), isLast && isEndKnown);
    }
    return rules;
}

// Calls `use` with number, text, line end and rules of each joined line.
template <class Use> void forEachJoinedLine(std::string_view bytes, const Use& use)
{
    LineWalker lines(bytes);
    std::size_t number = 1;
    for (auto line = lines.next(); line;) {
        const auto next = lines.next();
        const std::size_t end = static_cast<std::size_t>(line->data() - bytes.data()) + line->size();
        const std::size_t nextBegin
            = next ? static_cast<std::size_t>(next->data() - bytes.data()) : bytes.size();
        const std::string_view lineEnd = bytes.substr(end, nextBegin - end);
        if (const auto rules = rulesOfLine(*line, !lineEnd.empty()); !rules.empty())
            use(number, *line, bytes.substr(end).starts_with("\r\n") ? "\r\n" : lineEnd, rules);
        if (lineEnd == "\n")
            ++number;
        line = next;
    }
}

} // namespace

std::vector<JoinedLine> joinedLines(std::string_view bytes)
{
    std::vector<JoinedLine> joined;
    forEachJoinedLine(
        bytes, [&](std::size_t number, std::string_view line, std::string_view, const auto& rules) {
            joined.push_back({number, line, {}});
            for (const RuleText& rule : rules)
                joined.back().rules.push_back({ruleOf(rule), cutPropertiesOf(rule)});
        });
    return joined;
}

bool isJoinedLine(std::string_view line)
{
    return !rulesOfLine(line, true).empty();
}

std::string rescuedText(std::string_view bytes)
{
    std::string text;
    std::size_t copied = 0;
    forEachJoinedLine(
        bytes, [&](std::size_t, std::string_view line, std::string_view lineEnd, const auto& rules) {
            const auto begin = static_cast<std::size_t>(line.data() - bytes.data());
            text.append(bytes, copied, begin - copied);
            for (const RuleText& rule : rules)
                text.append(wholeLine(rule)).append(lineEnd.empty() ? "\n" : lineEnd);
            copied = begin + line.size() + lineEnd.size();
        });
    return text.append(bytes, copied);
}

} // namespace quorvane::rules
