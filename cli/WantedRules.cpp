#include "cli/WantedRules.h"

#include "cli/RuleObjectReader.h"
#include "rules/FileLines.h"
#include "rules/JoinedLines.h"
#include "rules/LineTokenizer.h"
#include "rules/RuleCodes.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleLine.h"
#include "rules/RuleMarks.h"
#include "rules/SlotChains.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace quorvane::cli {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view blanks = " \t\n\v\f\r";

// Collects rules, each once.
class RuleCollection {
public:
    // Throws NoRuleError for a rule already added with another tag or creation time.
    void add(workflow::WantedRule rule)
    {
        const std::uint64_t hash = identityHash(rule.rule);
        for (auto entry = m_slots.first(hash); entry != rules::SlotChains::none;
             entry = m_slots.next(entry)) {
            workflow::WantedRule& known = m_rules[m_slots.slot(entry)];
            if (isEqualRule(known.rule, rule.rule))
                return fold(known, rule);
        }
        m_slots.insert(hash, static_cast<std::uint32_t>(m_rules.size()));
        m_rules.push_back(std::move(rule));
    }

    std::vector<workflow::WantedRule> take() { return std::move(m_rules); }

private:
    static void fold(workflow::WantedRule& known, const workflow::WantedRule& rule)
    {
        const bool tagsDiffer = known.hasTag && rule.hasTag && !hasSameTag(known.rule, rule.rule);
        const bool timesDiffer
            = known.hasCreated && rule.hasCreated && createdOf(known.rule) != createdOf(rule.rule);
        if (tagsDiffer || timesDiffer)
            throw NoRuleError(
                std::string("the rule stands above with another ") + (tagsDiffer ? "tag" : "creation time"));
        known.rule = withMarks(
            known.rule, rule.hasTag ? rule.rule : known.rule, rule.hasCreated ? rule.rule : known.rule);
        known.hasTag = known.hasTag || rule.hasTag;
        known.hasCreated = known.hasCreated || rule.hasCreated;
    }

    std::vector<workflow::WantedRule> m_rules;
    rules::SlotChains m_slots;
};

NoRuleError expected(const std::string& what, std::string_view found)
{
    return NoRuleError("expected " + what + ", not \"" + std::string(found) + "\"");
}

// Parses the rule from the tokens of a line.
rules::RuleValue ruleOfTokens(const std::vector<std::string_view>& tokens, rules::TextPool& pool)
{
    const std::string_view ruleClass = tokens[0];
    if (ruleClass != rules::policyClassDescription(rules::PolicyClass::watch)
        && rules::policyClassForString(ruleClass) == rules::unknownCode)
        throw expected("a rule that begins with allow, deny or watch", ruleClass);
    if (tokens.size() < 5)
        throw NoRuleError("expected class, type, path, process and operations of a rule");
    if (rules::policyTypeForString(tokens[1]) == rules::unknownCode)
        throw expected("prefix, path or suffix", tokens[1]);
    if (tokens[4].empty() || tokens[4].find_first_not_of("rwcmx") != std::string_view::npos)
        throw expected("operations: letters out of rwcmx", tokens[4]);
    if (rules::kindOfLine(tokens, false) == rules::LineKind::watchRule)
        return makeRuleValue(watchRuleFromTokens(tokens, false, pool));
    return makeRuleValue(policyRuleFromTokens(tokens, false, pool));
}

// JSON may hold the other line ends of a rules file in its texts.
std::vector<rules::FileLine> linesOfJson(std::string_view text)
{
    std::vector<rules::FileLine> lines;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find_first_of("\r\n"), text.size());
        lines.push_back({text.substr(0, length), text.substr(length, 1)});
        text.remove_prefix(length + lines.back().end.size());
    }
    return lines;
}

// Reads the lines of a file; throws NoRuleError for an invalid one.
class LinesReader {
public:
    explicit LinesReader(bool isJson)
        : m_isJson(isJson)
    {
    }

    WantedRules read(std::string_view text)
    {
        WantedRules wanted;
        std::size_t number = 1;
        for (const rules::FileLine& line : m_isJson ? linesOfJson(text) : rules::fileLines(text)) {
            try {
                readLine(line.text, number, wanted);
            } catch (const NoRuleError& error) {
                wanted.problem = WantedRules::Problem{number, error.what()};
                return wanted;
            }
            number += line.end.ends_with('\n') ? 1U : 0U;
        }
        wanted.rules = m_rules.take();
        return wanted;
    }

private:
    void readLine(std::string_view line, std::size_t number, WantedRules& wanted)
    {
        if (line.find_first_not_of(blanks) == std::string_view::npos)
            return;
        if (m_isJson)
            m_rules.add(ruleOfJson(line));
        else if (line.front() != ';')
            readRuleLine(line, number, wanted);
    }

    void readRuleLine(std::string_view line, std::size_t number, WantedRules& wanted)
    {
        if (rules::isJoinedLine(line))
            throw NoRuleError(
                "expected one rule, not several: \"quorvanectl rescue\" takes joined lines apart");
        const auto& tokens = m_tokenizer.tokens(line, rules::mostTokensOfALine);
        if (tokens.empty())
            throw NoRuleError("expected class, type, path, process and operations of a rule");
        if (tokens[0] == "set")
            wanted.skippedOptions.push_back(number);
        else
            m_rules.add({ruleOfTokens(tokens, m_pool)});
    }

    bool m_isJson;
    rules::LineTokenizer m_tokenizer;
    rules::TextPool m_pool;
    RuleCollection m_rules;
};

} // namespace

WantedRules readWantedRules(std::string_view text)
{
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos || text[first] != '[')
        return LinesReader(first != std::string_view::npos && text[first] == '{').read(text);
    WantedRules none;
    none.problem = WantedRules::Problem{std::nullopt, "expected one JSON object a line, not an array"};
    return none;
}

} // namespace quorvane::cli
