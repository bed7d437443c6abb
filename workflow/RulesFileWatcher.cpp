#include "workflow/RulesFileWatcher.h"

#include "platform/Log.h"

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <string>
#include <system_error>
#include <utility>

namespace quorvane::workflow {

struct RulesFileWatcher::Watch {
    const std::string path;
    const std::function<void()> reload;
    const std::chrono::milliseconds interval;
    const Look look;
    const std::function<void()> absorbed;
    RulesFileMonitor monitor;
    std::mutex mutex{};
    std::condition_variable_any changed{};
    bool hasEnded = false;

    // The monitor, reload() and absorbed() are used only under the lock and only while no stop is requested.
    void run(const std::stop_token& stop)
    {
        std::unique_lock lock(mutex);
        while (!stop.stop_requested()) {
            lock.unlock();
            const auto time = look(path);
            lock.lock();
            if (stop.stop_requested())
                break;
            const bool hadAbsorbed = monitor.hasAbsorbed();
            if (monitor.monitorFileModification(time))
                reload();
            else if (hadAbsorbed || monitor.hasAbsorbed())
                absorbed();
            changed.wait_for(lock, stop, interval, [] { return false; });
        }
        hasEnded = true;
        changed.notify_all();
    }
};

RulesFileWatcher::RulesFileWatcher(std::string path, RunState& run, platform::Log& log,
    std::function<void()> reload, std::chrono::milliseconds interval, Look look,
    std::function<void()> absorbed)
    : m_watch(new Watch{
        std::move(path), std::move(reload), interval, std::move(look), std::move(absorbed), {run, log}})
{
    log.write("monitorFileModification starting");
    try {
        m_thread = std::jthread([watch = m_watch](const std::stop_token& stop) { watch->run(stop); });
    } catch (const std::system_error& error) {
        log.write(std::string("the rules file is not watched, for want of a thread: ") + error.what());
    }
}

RulesFileWatcher::~RulesFileWatcher()
{
    constexpr std::chrono::milliseconds patience(500);
    if (!m_thread.joinable())
        return;
    m_thread.request_stop();
    std::unique_lock lock(m_watch->mutex);
    if (!m_watch->changed.wait_for(lock, patience, [this] { return m_watch->hasEnded; }))
        m_thread.detach();
}

} // namespace quorvane::workflow
