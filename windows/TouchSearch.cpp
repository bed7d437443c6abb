#include "windows/TouchSearch.h"

#include "rules/RuleManager.h"

#include <utility>

namespace quorvane::windows {

namespace {

bool isWanted(const rules::RuleRef& rule, const workflow::TouchQuestion& question, bool includeSystemRules)
{
    const rules::RuleValue value = valueOf(rule); // immutable, whatever the store's thread does
    const bool isSystem = askValue(value, [](const auto& fields) { return fields.system; });
    return (includeSystemRules || !isSystem) && touches(value, question);
}

} // namespace

TouchSearch::TouchSearch(const rules::RuleManager& store)
    : m_store(store)
{
}

TouchSearch::~TouchSearch()
{
    stop();
}

void TouchSearch::search(const workflow::TouchQuestion& question, bool includeSystemRules)
{
    stop();
    m_searching = {};
    if (!m_rules)
        m_rules = std::make_shared<const Rules>(m_store.allRules());
    auto answer = std::make_shared<Rules>();
    m_thread.run(
        [rules = m_rules, question, includeSystemRules, answer, stop = m_searching.get_token()] {
            for (const rules::RuleRef& rule : *rules) {
                if (stop.stop_requested())
                    return;
                if (isWanted(rule, question, includeSystemRules))
                    answer->push_back(rule);
            }
        },
        [this, answer, stop = m_searching.get_token()] {
            if (!stop.stop_requested())
                Q_EMIT found(*answer);
        });
}

} // namespace quorvane::windows
