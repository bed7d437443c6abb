#pragma once

#include "workflow/Background.h"

#include <QObject>
#include <QThreadPool>

namespace quorvane::windows {

// Work beside the user interface thread, on one thread. For the user interface thread.
class BackgroundThread : public QObject, public workflow::Background {
    Q_OBJECT
public:
    BackgroundThread();
    // Waits for the work that is under way; what should follow it is dropped.
    ~BackgroundThread() override;

    void run(std::function<void()> work, std::function<void()> then) override;
    // Windows are not painted meanwhile.
    void wait() override;

private:
    QThreadPool m_pool;
    int m_pending = 0;
};

} // namespace quorvane::windows
