#include "windows/BackgroundThread.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace quorvane::windows {

BackgroundThread::BackgroundThread()
{
    m_pool.setMaxThreadCount(1);
}

BackgroundThread::~BackgroundThread()
{
    m_pool.waitForDone();
}

void BackgroundThread::run(std::function<void()> work, std::function<void()> then)
{
    ++m_pending;
    m_pool.start([this, work = std::move(work), then = std::move(then)] {
        work();
        QMetaObject::invokeMethod(
            this,
            [this, then] {
                --m_pending;
                then();
            },
            Qt::QueuedConnection);
    });
}

void BackgroundThread::wait()
{
    while (m_pending > 0) {
        m_pool.waitForDone();
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
    }
}

} // namespace quorvane::windows
