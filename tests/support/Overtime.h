#pragma once

#include <QTimer>

#include <chrono>

namespace quorvane::test {

// Whether what was waited for in a local event loop came by the end of the time allowed instead of by itself.
// What waits is allowed more.
class Overtime {
public:
    Overtime()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { m_happened = true; });
        m_timer.start(std::chrono::seconds(10));
    }

    static constexpr std::chrono::seconds more{20};
    bool happened() const { return m_happened; }

private:
    QTimer m_timer;
    bool m_happened = false;
};

} // namespace quorvane::test
