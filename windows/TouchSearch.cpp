#include "windows/TouchSearch.h"

#include "rules/RuleManager.h"

#include <utility>

namespace quorvane {

namespace {

bool isWanted(const RuleRef& rule, const TouchQuestion& question, bool includeSystemRules)
{
    const RuleValue value = valueOf(rule); // which stays as it is, whatever the store's thread does
    const bool isSystem = askValue(value, [](const auto& fields) { return fields.system; });
    return (includeSystemRules || !isSystem) && touches(value, question);
}

} // namespace

TouchSearch::TouchSearch(const RuleManager& store)
    : m_store(store)
{
}

TouchSearch::~TouchSearch()
{
    stop();
}

void TouchSearch::search(const TouchQuestion& question, bool includeSystemRules)
{
    stop();
    m_searching = {};
    if (!m_rules)
        m_rules = std::make_shared<const Rules>(m_store.allRules());
    auto answer = std::make_shared<Rules>();
    m_thread.run(
        [rules = m_rules, question, includeSystemRules, answer, stop = m_searching.get_token()] {
            for (const RuleRef& rule : *rules) {
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

} // namespace quorvane
