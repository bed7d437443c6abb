#include "rules/PreparedReload.h"
#include "rules/RuleManager.h"

#include <new>
#include <utility>

// How a store is reloaded with the help of another thread.

namespace quorvane::rules {

PreparedReload::PreparedReload(std::unique_ptr<RuleManager> read, std::shared_ptr<const RuleRows> from)
    : m_read(std::move(read))
    , m_from(std::move(from))
{
}

PreparedReload::~PreparedReload() = default;

void PreparedReload::run()
{
    m_read->reloadCurrentUserConfiguration();
    const auto read = m_read->storedRows();
    if (read->count(true) != m_read->storedRules())
        throw std::bad_alloc(); // there was no memory for the rows
    compareWith(*read);
    m_read->dropRules();
}

std::unique_ptr<PreparedReload> RuleManager::prepareReload() const
{
    std::unique_ptr<PreparedReload> reload;
    attempt([&] {
        auto read = std::make_unique<RuleManager>(m_locations, m_log, m_wait);
        read->m_ruleSequence = m_ruleSequence;
        reload = std::make_unique<PreparedReload>(std::move(read), m_store->storedRows());
    });
    return reload;
}

std::optional<ChangeSet> RuleManager::finishReload(PreparedReload& reload)
{
    if (!reload.m_change || !m_store->hasExactly(*reload.m_from))
        return std::nullopt;
    for (const PolicyRulePtr& rule : reload.m_aged)
        rule->setInitialized(reload.m_readAt);
    std::optional<ChangeSet> done;
    if (!attempt([&] { done = m_store->apply(std::move(*reload.m_change)); }))
        return std::nullopt;
    RuleManager& read = *reload.m_read;
    m_options = std::move(read.m_options);
    m_ruleSequence = read.m_ruleSequence;
    m_lastErrorMessage = std::move(read.m_lastErrorMessage);
    m_readFailures = std::move(read.m_readFailures);
    m_unreadRules = std::move(read.m_unreadRules);
    m_ownFile = std::move(read.m_ownFile);
    ++m_ownFileReadings;
    return done;
}

// What was read besides them stays.
void RuleManager::dropRules()
{
    m_store = std::make_unique<RuleStore>();
}

} // namespace quorvane::rules
