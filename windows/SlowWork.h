#pragma once

#include <QObject>
#include <QTimer>

namespace quorvane::windows {

// Whether some work takes so long (0.3 s) that the user should know of it. For use by the user interface
// thread.
class SlowWork : public QObject {
    Q_OBJECT
public:
    SlowWork();

    // Going on with work that is under way does not start the time anew.
    void setWorking(bool isWorking);
    bool isSlow() const { return m_isSlow; }

Q_SIGNALS:
    void slownessDidChange();

private:
    void setSlow(bool isSlow);

    QTimer m_untilSlow;
    bool m_isSlow = false;
};

} // namespace quorvane::windows
