#pragma once

#include <QObject>

class QWidget;

namespace quorvane::desktop {

// While one exists, the program's windows are painted but take no input: keys, clicks and attempts to close a
// window are dropped, not kept for later. The end of the program is not delayed: local loops end with it. For
// local event loops that wait for the user or a service. Locks may nest. User interface thread only.
class InputLock : public QObject {
    Q_OBJECT
public:
    InputLock();

    // Exempts a window that belongs to the wait, and every window that it opens.
    static void exempt(QWidget& window);

protected:
    bool eventFilter(QObject* target, QEvent* event) override;
};

} // namespace quorvane::desktop
