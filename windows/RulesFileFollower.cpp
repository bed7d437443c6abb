#include "windows/RulesFileFollower.h"

#include "platform/Log.h"
#include "platform/Relaunch.h"
#include "workflow/ApplicationServices.h"
#include "workflow/RulesDocument.h"
#include "workflow/RulesFileProbe.h"

#include <chrono>

namespace quorvane {

RulesFileFollower::RulesFileFollower(
    RulesDocument& document, ApplicationServices& application, RunState& run, Log& log)
    : m_document(document)
    , m_application(application)
    , m_run(run)
    , m_log(log)
{
}

void RulesFileFollower::start()
{
    const auto reload = [this] {
        if (m_isReloadDue->exchange(true))
            return;
        QMetaObject::invokeMethod(this, &RulesFileFollower::rulesFileDidChange, Qt::QueuedConnection);
    };
    // What was taken for this program's own doing may have been another's.
    const auto absorbed = [this] {
        QMetaObject::invokeMethod(
            this, [this] { m_document.lookAtFile(); }, Qt::QueuedConnection);
    };
    constexpr std::chrono::seconds betweenLooks{1};
    m_watcher.emplace(m_document.store().locations().userRulesFile(), m_run, m_log, reload, betweenLooks,
        modificationTime, absorbed);
}

void RulesFileFollower::rulesFileDidChange()
{
    *m_isReloadDue = false;
    m_document.takeForeignChanges();
}

void RulesFileFollower::checkFile()
{
    if (const auto notice = rulesFileNotice(m_document.store().locations().userRulesFile())) {
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
