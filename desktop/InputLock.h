#pragma once

#include <QObject>

class QWidget;

namespace quorvane::desktop {

// While one exists, the program's windows are painted but take no input: keys, clicks and attempts to close a
// window are dropped, not kept for later. The end of the program is not held up: local loops end with it.
// For local event loops that wait for a person or a service. Locks may nest.
class InputLock : public QObject {
    Q_OBJECT
public:
    InputLock();

    // A window that a wait is about takes input all the same, and so does whatever it opens.
    static void exempt(QWidget& window);

protected:
    bool eventFilter(QObject* target, QEvent* event) override;
};

} // namespace quorvane::desktop
