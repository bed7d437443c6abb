#include "workflow/FileFindings.h"

#include "platform/Unicode.h"
#include "rules/JoinedLines.h"
#include "rules/LineWalker.h"
#include "rules/RulesParser.h"

#include <algorithm>
#include <new>
#include <unordered_map>

namespace quorvane::workflow {

namespace {

// The lines of the rules of a store in its file.
class LinesOfRules {
public:
    LinesOfRules(const rules::RuleManager& store, std::string_view bytes)
    {
        const std::string_view text = bytes.substr(0, bytes.find('\0'));
        if (!platform::isValidUtf8(text))
            return;
        rules::RulesParser parser({}, 0); // one line at a time
        rules::LineWalker lines(text);
        std::size_t number = 1;
        const char* counted = text.data();
        while (const auto line = lines.next()) {
            number += static_cast<std::size_t>(std::count(counted, line->data(), '\n'));
            counted = line->data();
            if (!line->empty() && line->front() != ';')
                note(store, parser.parse(*line), number);
        }
    }

    // 0 for a rule that is not in the file.
    std::size_t of(const rules::RuleRef& rule) const
    {
        const auto found = m_lines.find(addressOf(rule));
        return found == m_lines.end() ? 0 : found->second;
    }

private:
    void note(
        const rules::RuleManager& store, const std::vector<rules::ParsedLine>& parsed, std::size_t number)
    {
        for (const rules::ParsedLine& line : parsed) {
            if (const auto* policy = std::get_if<std::shared_ptr<rules::PolicyRuleFields>>(&line.content))
                note(store.firstEqualRule(rules::PolicyRule(rules::PolicyValue(*policy))), number);
            else if (const auto* watch = std::get_if<std::shared_ptr<rules::WatchRuleFields>>(&line.content))
                note(store.firstEqualRule(rules::WatchRule(rules::WatchValue(*watch))), number);
        }
    }
    // Of equal rules the first is stored.
    template <class RulePtr> void note(const RulePtr& rule, std::size_t number)
    {
        if (rule)
            m_lines.try_emplace(rule.get(), number);
    }

    std::unordered_map<const void*, std::size_t> m_lines;
};

} // namespace

std::unique_ptr<rules::RuleManager> storeOfText(std::string_view text, const platform::Locations& locations,
    platform::Log& log, const std::function<void(std::string_view)>& discard)
{
    auto store = std::make_unique<rules::RuleManager>(locations, log);
    if (!store->addUserText(text, discard))
        throw std::bad_alloc();
    store->rebuildRulesCache();
    return store;
}

std::vector<FileFinding> joinedLineFindings(std::string_view bytes, const FileSearch& search)
{
    std::vector<FileFinding> findings;
    if (!search.findings.kinds.contains(FindingKind::joined))
        return findings;
    for (const rules::JoinedLine& line : rules::joinedLines(bytes)) {
        findings.push_back({.kind = FindingKind::joined,
            .line = line.number,
            .rule = std::string(line.text),
            .text = "This line holds " + std::to_string(line.rules.size())
                + " rules: a write of the file was cut short there."});
    }
    return findings;
}

void useFileFindings(const rules::RuleManager& store, std::string_view bytes, const FileSearch& search,
    const std::vector<FileFinding>& joined, const std::function<void(const FileFinding&)>& use)
{
    const RowFindings findings(store, false, search.findings);
    std::optional<LinesOfRules> lines;
    store.rows()->forEach(false, [&](std::size_t row, const rules::RuleRef& rule) {
        const std::vector<RuleFinding> ofRow = findings.at(row);
        if (ofRow.empty())
            return;
        if (search.withLines && !lines)
            lines.emplace(store, bytes);
        FileFinding found{.kind = ofRow.front().kind,
            .row = row,
            .line = lines ? lines->of(rule) : 0,
            .rule = ruleText(rule),
            .text = {}};
        for (const RuleFinding& finding : ofRow) {
            found.kind = finding.kind;
            found.other = finding.other == nullptr ? std::string() : ruleText(*finding.other);
            found.reason = findingReason(finding);
            found.text = findingText(finding);
            use(found);
        }
    });
    std::for_each(joined.begin(), joined.end(), use);
}

} // namespace quorvane::workflow
