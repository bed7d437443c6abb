#include "windows/SlowWork.h"

#include <chrono>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr std::chrono::milliseconds untilSlow{300};

} // namespace

SlowWork::SlowWork()
{
    m_untilSlow.setSingleShot(true);
    m_untilSlow.setInterval(untilSlow);
    connect(&m_untilSlow, &QTimer::timeout, this, [this] { setSlow(true); });
}

void SlowWork::setWorking(bool isWorking)
{
    if (!isWorking) {
        m_untilSlow.stop();
        setSlow(false);
    } else if (!m_isSlow && !m_untilSlow.isActive()) {
        m_untilSlow.start();
    }
}

void SlowWork::setSlow(bool isSlow)
{
    if (std::exchange(m_isSlow, isSlow) != isSlow)
        Q_EMIT slownessDidChange();
}

} // namespace quorvane::windows
