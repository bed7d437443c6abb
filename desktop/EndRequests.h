#pragma once

#include "platform/FileDescriptor.h"

#include <QObject>

namespace quorvane::desktop {

// External requests to end the program: SIGTERM, SIGINT, SIGHUP, and the end of the desktop session.
//
// While one exists, the signals no longer end the process directly, however many arrive; a signal ignored at
// start, as nohup does, stays ignored. No window is asked to close first, since one may be waiting for an
// answer. User interface thread only; after QApplication, at most one at a time.
class EndRequests : public QObject {
    Q_OBJECT
public:
    EndRequests();
    ~EndRequests() override;
    EndRequests(const EndRequests&) = delete;
    EndRequests& operator=(const EndRequests&) = delete;

Q_SIGNALS:
    // Emitted by the event loop, local ones included: at least once after each request.
    void endRequested();

protected:
    bool eventFilter(QObject* target, QEvent* event) override;

private:
    void takeSignals();

    platform::FileDescriptor m_received; // a byte a signal
    platform::FileDescriptor m_handlersEnd;
};

} // namespace quorvane::desktop
