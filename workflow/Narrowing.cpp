#include "workflow/Narrowing.h"

#include "platform/Unicode.h"
#include "rules/ApplicationIdentity.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace quorvane::workflow {

namespace {

std::vector<const void*> recordsWithProblem(
    const ProblemListsPtr& problems, const std::vector<FindingKind>& kinds)
{
    std::vector<const void*> records;
    for (const FindingKind kind : kinds) {
        for (const KnownProblem& problem : problems->of(kind))
            records.push_back(addressOf(problem.rule));
    }
    std::sort(records.begin(), records.end(), std::less<>());
    return records;
}

// Counts names. Adjacent rules mostly have the same one, so the last counter is cached.
class NameCounts {
public:
    // `make` converts a text to its name.
    template <class Make> void count(const rules::NullableText& text, const Make& make)
    {
        if (m_last == nullptr || text.view() != m_lastText.view()) {
            m_lastText = text;
            m_last = &m_counts[make(text)];
        }
        ++*m_last;
    }

    // The most frequent names, in alphabetical order, without the empty one.
    NamesInUse::List list() const
    {
        std::vector<std::pair<std::string_view, std::size_t>> counted(m_counts.begin(), m_counts.end());
        std::erase_if(counted, [](const auto& name) { return name.first.empty(); });
        NamesInUse::List list;
        if (counted.size() > NamesInUse::most) {
            list.further = counted.size() - NamesInUse::most;
            const auto end = counted.begin() + static_cast<std::ptrdiff_t>(NamesInUse::most);
            std::nth_element(counted.begin(), end, counted.end(), [](const auto& a, const auto& b) {
                return a.second != b.second ? a.second > b.second : a.first < b.first;
            });
            counted.erase(end, counted.end());
        }
        std::vector<std::pair<std::string, std::string>> keyed;
        for (const auto& [name, count] : counted)
            keyed.emplace_back(platform::foldedCase(name), name);
        std::sort(keyed.begin(), keyed.end());
        for (auto& [key, name] : keyed)
            list.names.push_back(std::move(name));
        return list;
    }

private:
    std::unordered_map<std::string, std::size_t> m_counts;
    rules::NullableText m_lastText;
    std::size_t* m_last = nullptr; // the counter of that text
};

} // namespace

Narrowing::Narrowing(RuleCriteria criteria, const ProblemListsPtr& problems)
    : m_criteria(std::move(criteria))
    , m_problems(problems)
{
    if (!m_criteria.findings.empty())
        m_withProblem = recordsWithProblem(problems, m_criteria.findings);
}

bool Narrowing::isWanted(const rules::RuleRef& rule) const
{
    return (m_criteria.findings.empty()
               || std::binary_search(
                   m_withProblem.begin(), m_withProblem.end(), addressOf(rule), std::less<>()))
        && hasProperties(rule, m_criteria);
}

bool Narrowing::follow(const rules::RuleRows& rows, const std::stop_token& stop)
{
    const rules::AppendOnlyTable<rules::RuleRef>& rules = rows.numberedRules();
    if (!rules.sharesElementsWith(m_rules))
        m_marks.clear();
    m_rules = rules;
    m_marks.reserve(rules.size());
    while (m_marks.size() < rules.size()) {
        if (stop.stop_requested())
            return false;
        m_marks.push_back(isWanted(rules[m_marks.size()]));
    }
    return true;
}

std::shared_ptr<const rules::RuleRows> Narrowing::narrowed(const rules::RuleRows& rows)
{
    follow(rows);
    return rows.marked(m_marks);
}

NamesInUse namesInUse(const rules::RuleRows& rows, const std::stop_token& stop)
{
    NameCounts tags;
    NameCounts programs;
    const std::size_t count = rows.count(true);
    for (std::size_t row = 0; row < count && !stop.stop_requested(); ++row) {
        askValue(valueOf(rows.at(row, true)), [&](const auto& fields) {
            tags.count(fields.tag, [](const rules::NullableText& tag) { return std::string(tag.view()); });
            programs.count(fields.processName, rules::applicationPathForProcess);
        });
    }
    return {tags.list(), programs.list()};
}

} // namespace quorvane::workflow
