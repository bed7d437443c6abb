#pragma once

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QObject>

#include <algorithm>

namespace quorvane::bench {

// Measures the longest time that no event was handled during an operation, and the whole time; in
// milliseconds.
class LongestGap {
public:
    LongestGap() { m_whole.start(); }

    // Runs work that blocks the window's thread, except where it handles events.
    template <class Work> void step(const Work& work)
    {
        QElapsedTimer timer;
        timer.start();
        const auto endGap = [&] {
            m_longest = std::max(m_longest, milliseconds(timer));
            timer.restart();
        };
        const QMetaObject::Connection handling = QObject::connect(
            QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, endGap);
        work();
        QObject::disconnect(handling);
        endGap();
    }

    template <class IsDone> void handleEventsUntil(const IsDone& isDone)
    {
        while (!isDone())
            step([] { QCoreApplication::processEvents(); });
    }

    double longest() const { return m_longest; }
    double whole() const { return milliseconds(m_whole); }

private:
    static double milliseconds(const QElapsedTimer& timer)
    {
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

    QElapsedTimer m_whole;
    double m_longest = 0;
};

} // namespace quorvane::bench
