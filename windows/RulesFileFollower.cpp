#include "windows/RulesFileFollower.h"

#include "platform/Log.h"
#include "platform/Relaunch.h"
#include "workflow/ApplicationServices.h"
#include "workflow/RulesDocument.h"
#include "workflow/RulesFileProbe.h"

#include <chrono>

namespace quorvane::windows {

RulesFileFollower::RulesFileFollower(workflow::RulesDocument& document,
    workflow::ApplicationServices& application, workflow::RunState& run, platform::Log& log)
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
    // A change attributed to this program may have been made by another.
    const auto absorbed = [this] {
        QMetaObject::invokeMethod(
            this, [this] { m_document.lookAtFile(); }, Qt::QueuedConnection);
    };
    constexpr std::chrono::seconds betweenLooks{1};
    m_watcher.emplace(m_document.store().locations().userRulesFile(), m_run, m_log, reload, betweenLooks,
        workflow::modificationTime, absorbed);
}

void RulesFileFollower::rulesFileDidChange()
{
    *m_isReloadDue = false;
    m_document.takeForeignChanges();
}

void RulesFileFollower::checkFile()
{
    if (const auto notice = workflow::rulesFileNotice(m_document.store().locations().userRulesFile())) {
        m_application.displayNotice(notice->header, notice->message, true);
        if (!m_application.isTerminating())
            relaunchAfterDelay(workflow::relaunchDelay);
    }
}

void RulesFileFollower::relaunchAfterDelay(float delay)
{
    if (!quorvane::platform::relaunchAfterDelay(delay))
        m_log.write("could not start the program again");
    m_application.terminate();
}

} // namespace quorvane::windows
