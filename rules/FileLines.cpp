#include "rules/FileLines.h"

#include "rules/Hashing.h"
#include "rules/JoinedLines.h"
#include "rules/LineWalker.h"
#include "rules/RuleCodes.h"
#include "rules/RuleIdentity.h"

#include <memory>
#include <new>
#include <utility>

namespace quorvane {

namespace {

bool isKnown(const PolicyRuleFields& rule)
{
    return rule.policyClass != unknownCode && rule.policyType != unknownCode && rule.operations != 0;
}

bool isKnown(const WatchRuleFields& rule)
{
    return rule.policyType != unknownCode && rule.operations != 0;
}

template <class Fields> std::optional<RuleValue> knownRule(const std::shared_ptr<Fields>& rule)
{
    return isKnown(*rule) ? std::optional<RuleValue>(std::shared_ptr<const Fields>(rule)) : std::nullopt;
}

std::optional<RuleValue> knownRule(const FilterOption& /*option*/)
{
    return std::nullopt;
}

} // namespace

std::vector<FileLine> fileLines(std::string_view text)
{
    std::vector<FileLine> lines;
    LineWalker walker(text);
    const char* const textEnd = text.data() + text.size();
    for (auto line = walker.next(); line;) {
        const char* const end = line->data() + line->size();
        auto next = walker.next();
        if (next && next->empty() && std::string_view(end, textEnd).starts_with("\r\n"))
            next = walker.next();
        const char* const behind = next ? next->data() : textEnd;
        if (line->data() != textEnd)
            lines.push_back({*line, std::string_view(end, behind)});
        line = next;
    }
    return lines;
}

std::optional<RuleValue> RuleReader::ruleOf(std::string_view line)
{
    const std::vector<ParsedLine> parsed = m_parser.parse(line);
    if (parsed.empty())
        return std::nullopt;
    auto rule = std::visit([](const auto& content) { return knownRule(content); }, parsed.front().content);
    return rule && !isJoinedLine(line) ? std::move(rule) : std::nullopt;
}

std::uint32_t LineCatalogue::numberOf(std::string_view line)
{
    const std::uint64_t hash = combinedHash(0, line);
    for (auto entry = m_lineSlots.first(hash); entry != SlotChains::none; entry = m_lineSlots.next(entry)) {
        if (m_lines[m_lineSlots.slot(entry)].text == line)
            return m_lineSlots.slot(entry);
    }
    if (m_lines.size() == none)
        throw std::bad_alloc();
    const auto number = static_cast<std::uint32_t>(m_lines.size());
    const auto rule = m_reader.ruleOf(line);
    m_lines.push_back({line, none});
    m_lineSlots.insert(hash, number);
    if (rule)
        m_lines.back().rule = numberOfRule(number, *rule);
    return number;
}

std::uint32_t LineCatalogue::numberOfRule(std::uint32_t line, const RuleValue& rule)
{
    const std::uint64_t hash = identityHash(rule);
    for (auto entry = m_ruleSlots.first(hash); entry != SlotChains::none; entry = m_ruleSlots.next(entry)) {
        const std::uint32_t number = m_ruleSlots.slot(entry);
        if (isEqualRule(rule, ruleOf(m_rules[number].line)))
            return number;
    }
    const auto number = static_cast<std::uint32_t>(m_rules.size());
    m_rules.push_back({line, std::holds_alternative<WatchValue>(rule)});
    m_ruleSlots.insert(hash, number);
    return number;
}

} // namespace quorvane
