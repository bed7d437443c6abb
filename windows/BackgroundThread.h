#pragma once

#include "workflow/Background.h"

#include <QObject>
#include <QThreadPool>

namespace quorvane::windows {

// Runs work in parallel to the user interface thread, on one thread. For use by the user interface thread.
class BackgroundThread : public QObject, public workflow::Background {
    Q_OBJECT
public:
    BackgroundThread();
    // Waits for the running work; its `then` and queued work are dropped.
    ~BackgroundThread() override;

    void run(std::function<void()> work, std::function<void()> then) override;
    // Blocks: windows are not painted.
    void wait() override;

private:
    QThreadPool m_pool;
    int m_pending = 0;
};

} // namespace quorvane::windows
