#include "workflow/RulesSelection.h"

#include "rules/ApplicationIdentity.h"
#include "rules/RuleCodes.h"
#include "rules/RuleProperties.h"
#include "rules/RuleRef.h"

#include <array>
#include <cstdint>
#include <set>

namespace quorvane::workflow {

namespace {

constexpr std::size_t mostPrograms = 5;

struct Counts {
    std::size_t rules = 0;
    std::size_t system = 0;
    std::array<std::size_t, 4> ofClass{}; // allow, deny, watch, others
};

template <class Fields> void count(Counts& counts, const Fields& rule)
{
    const auto ruleClass = static_cast<std::uint32_t>(classOf(rule));
    ++counts.rules;
    counts.system += rule.system ? 1 : 0;
    ++counts.ofClass[ruleClass < 3 ? ruleClass : 3];
}

std::string countWords(const Counts& counts)
{
    constexpr std::array<std::string_view, 4> names{" allow", " deny", " watch", " of another class"};
    std::string words = std::to_string(counts.rules) + (counts.rules == 1 ? " rule: " : " rules: ");
    std::string_view separator;
    for (std::size_t each = 0; each < names.size(); ++each) {
        if (counts.ofClass[each] == 0)
            continue;
        words.append(separator).append(std::to_string(counts.ofClass[each])).append(names[each]);
        separator = ", ";
    }
    if (counts.system > 0)
        words += "; " + std::to_string(counts.system) + " of the system, which stay as they are";
    return words + ".";
}

std::string programWords(const std::set<std::string>& programs)
{
    std::string words = programs.size() == 1 ? " Program: " : " Programs: ";
    std::size_t named = 0;
    for (const std::string& program : programs) {
        if (named == mostPrograms)
            return words + " and " + std::to_string(programs.size() - named) + " more.";
        words.append(named++ == 0 ? "" : ", ").append(program);
    }
    return words + ".";
}

} // namespace

RulesSelection::RulesSelection(
    std::shared_ptr<const rules::RuleRows> rows, bool includeSystemRules, std::vector<Range> ranges)
    : m_rows(std::move(rows))
    , m_includeSystemRules(includeSystemRules)
    , m_ranges(std::move(ranges))
{
}

std::size_t RulesSelection::count() const
{
    std::size_t count = 0;
    for (const auto& [first, end] : m_ranges)
        count += end - first;
    return count;
}

std::optional<rules::RuleRef> RulesSelection::onlyRule() const
{
    return count() == 1 ? std::optional(m_rows->at(m_ranges.front().first, m_includeSystemRules))
                        : std::nullopt;
}

std::string selectionSummary(const RulesSelection& selection)
{
    Counts counts;
    std::set<std::string> programs;
    selection.forEach([&](const rules::RuleRef& rule) {
        askValue(valueOf(rule), [&](const auto& fields) {
            count(counts, fields);
            programs.insert(applicationNameForProcess(fields.processName));
        });
    });
    return countWords(counts) + programWords(programs);
}

} // namespace quorvane::workflow
