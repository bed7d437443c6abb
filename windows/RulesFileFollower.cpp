#include "windows/RulesFileFollower.h"

#include "platform/Log.h"
#include "platform/Relaunch.h"
#include "rules/RuleManager.h"
#include "workflow/ApplicationServices.h"
#include "workflow/RulesFileProbe.h"

#include <utility>

namespace quorvane {

RulesFileFollower::RulesFileFollower(RuleManager& store, ApplicationServices& application, RunState& run,
    Log& log, std::function<bool()> mayReload)
    : m_store(store)
    , m_application(application)
    , m_run(run)
    , m_log(log)
    , m_mayReload(std::move(mayReload))
{
}

void RulesFileFollower::start()
{
    m_watcher.emplace(m_store.locations().userRulesFile(), m_run, m_log, [this] {
        QMetaObject::invokeMethod(this, &RulesFileFollower::rulesFileDidChange, Qt::QueuedConnection);
    });
}

void RulesFileFollower::rulesFileDidChange()
{
    if (!m_mayReload())
        return;
    m_store.reloadCurrentUserConfiguration();
    m_store.rebuildRulesCache();
    Q_EMIT rulesWereReloaded();
}

void RulesFileFollower::checkFile()
{
    if (const auto notice = rulesFileNotice(m_store.locations().userRulesFile())) {
        m_application.displayNotice(notice->header, notice->message, true);
        if (!m_application.isTerminating())
            relaunchAfterDelay(relaunchDelay);
    }
}

void RulesFileFollower::relaunchAfterDelay(float delay)
{
    if (!quorvane::relaunchAfterDelay(delay))
        m_log.write("could not start the program again");
    m_application.terminate();
}

} // namespace quorvane
