#include "rules/PreparedReload.h"
#include "rules/RuleManager.h"

#include <new>
#include <utility>

// How a store is reloaded with the help of another thread.

namespace quorvane::rules {

PreparedReload::PreparedReload(
    std::unique_ptr<RuleManager> read, std::shared_ptr<const RuleRows> from, std::size_t manySteps)
    : m_read(std::move(read))
    , m_from(std::move(from))
    , m_manySteps(manySteps)
{
}

PreparedReload::~PreparedReload() = default;

void PreparedReload::run()
{
    m_read->reloadCurrentUserConfiguration();
    compareWith(m_read->takeRules());
}

std::unique_ptr<PreparedReload> RuleManager::prepareReload(std::size_t manySteps) const
{
    std::unique_ptr<PreparedReload> reload;
    attempt([&] {
        auto read = std::make_unique<RuleManager>(m_locations, m_log, m_wait);
        read->m_ruleSequence = m_ruleSequence;
        reload = std::make_unique<PreparedReload>(std::move(read), m_store->storedRows(), manySteps);
    });
    return reload;
}

bool RuleManager::finishReload(PreparedReload& reload)
{
    if (!reload.isPossible() || !m_store->hasExactly(*reload.m_from))
        return false;
    const bool hasRoom = attempt([&] {
        if (reload.m_succession)
            return reload.m_succession->perform(m_store, reload.m_readAt);
        for (const PolicyRulePtr& rule : reload.m_aged)
            rule->setInitialized(reload.m_readAt);
        m_store->apply(std::move(*reload.m_change));
    });
    if (!hasRoom)
        return false;
    RuleManager& read = *reload.m_read;
    m_options = std::move(read.m_options);
    m_ruleSequence = read.m_ruleSequence;
    m_lastErrorMessage = std::move(read.m_lastErrorMessage);
    m_readFailures = std::move(read.m_readFailures);
    m_unreadRules = std::move(read.m_unreadRules);
    m_ownFile = std::move(read.m_ownFile);
    ++m_ownFileReadings;
    return true;
}

// What was read besides them stays.
std::unique_ptr<RuleStore> RuleManager::takeRules()
{
    return std::exchange(m_store, std::make_unique<RuleStore>());
}

} // namespace quorvane::rules
