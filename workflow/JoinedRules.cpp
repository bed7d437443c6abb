#include "workflow/JoinedRules.h"

#include "rules/JoinedLines.h"
#include "rules/RuleIdentity.h"
#include "rules/RulesFile.h"
#include "rules/RulesText.h"

#include <cstdint>
#include <new>
#include <unordered_set>
#include <utility>

namespace quorvane::workflow {

std::size_t joinedLineCount(std::string_view bytes)
{
    return rules::joinedLines(bytes).size();
}

std::size_t joinedLineCountOfFile(const std::string& path)
{
    try {
        return joinedLineCount(rules::RulesFileText::read(path).bytes());
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

const std::vector<rules::RuleValue>& JoinedLinesOfFile::rules()
{
    std::error_code error;
    const auto present = platform::FileIdentity::ofPath(m_path, error);
    if (present && present == m_identity)
        return m_rules;
    const rules::RulesFileText file = rules::RulesFileText::read(m_path);
    m_rules.clear();
    for (const rules::JoinedLine& line : rules::joinedLines(file.bytes()))
        m_rules.push_back(line.rules.front().rule);
    m_identity = file.identity();
    return m_rules;
}

RulesApart rulesOfJoinedLines(std::string_view bytes)
{
    RulesApart apart;
    for (const rules::JoinedLine& line : rules::joinedLines(bytes)) {
        for (const rules::JoinedRule& joined : line.rules) {
            if (askValue(joined.rule, [](const auto& fields) { return fields.operations != 0; }))
                apart.rules.push_back({joined.rule, !joined.cut.empty()});
        }
    }
    return apart;
}

RulesApart rulesApart(std::string_view bytes)
{
    std::unordered_set<std::uint64_t> cut; // by hash: a false positive only costs a tick
    for (const RulesApart::Rule& joined : rulesOfJoinedLines(bytes).rules) {
        if (joined.isCut)
            cut.insert(identityHash(joined.rule));
    }
    RulesApart apart;
    for (rules::RuleValue& rule : rules::rulesOfText(rules::rescuedText(bytes))) {
        const bool isCut = cut.contains(identityHash(rule));
        apart.rules.push_back({std::move(rule), isCut});
    }
    return apart;
}

} // namespace quorvane::workflow
