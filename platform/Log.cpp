#include "platform/Log.h"

#include <cstdlib>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include <syslog.h>
#include <unistd.h>

namespace quorvane::platform {

Log::Log(std::vector<std::unique_ptr<LogSink>> sinks)
    : m_sinks(std::move(sinks))
{
    if (!isListening())
        return;
    try {
        m_thread = std::thread([this] { writeQueuedLines(); });
    } catch (const std::bad_alloc&) {
        writeNow("the log writes each line at once, having no thread");
    } catch (const std::system_error& error) {
        writeNow(std::string("the log writes each line at once, having no thread: ") + error.what());
    }
}

Log::~Log()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_queued.notify_one();
    if (m_thread.joinable())
        m_thread.join();
}

void Log::write(std::string line)
{
    if (!isListening())
        return;
    if (!m_thread.joinable()) {
        writeNow(line);
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        if (!queue(std::move(line)))
            ++m_dropped;
    }
    m_queued.notify_one();
}

bool Log::queue(std::string line)
{
    const std::size_t size = line.size();
    if (m_queueSize + size > s_largestQueue)
        return false;
    try {
        m_queue.push_back(std::move(line));
    } catch (const std::bad_alloc&) {
        return false;
    }
    m_queueSize += size;
    return true;
}

void Log::flush()
{
    std::unique_lock lock(m_mutex);
    m_written.wait(lock, [this] { return m_queue.empty() && m_dropped == 0 && !m_writing; });
}

void Log::writeQueuedLines()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_queued.wait(lock, [this] { return m_ending || !m_queue.empty() || m_dropped > 0; });
        if (m_queue.empty() && m_dropped == 0)
            return;
        std::vector<std::string> lines = std::exchange(m_queue, {});
        m_queueSize = 0;
        if (const std::size_t dropped = std::exchange(m_dropped, 0); dropped > 0)
            lines.push_back(
                "the log could not keep up: " + std::to_string(dropped) + " lines are missing here");
        m_writing = true;
        lock.unlock();
        for (const std::string& line : lines)
            writeToSinks(line);
        lock.lock();
        m_writing = false;
        m_written.notify_all();
    }
}

void Log::writeNow(const std::string& line)
{
    const std::lock_guard lock(m_mutex);
    writeToSinks(line);
}

void Log::writeToSinks(const std::string& line)
{
    for (const auto& sink : m_sinks) {
        try {
            sink->writeLine(line);
        } catch (const std::bad_alloc&) { // the operation matters more than its log line
        }
    }
}

namespace {

class SystemLogSink : public LogSink {
public:
    explicit SystemLogSink(const char* ident) { openlog(ident, LOG_PID, LOG_USER); }
    void writeLine(const std::string& line) override { syslog(LOG_NOTICE, "%s", line.c_str()); }
};

class StandardErrorSink : public LogSink {
public:
    void writeLine(const std::string& line) override
    {
        const std::string whole = line + '\n';
        std::string_view rest = whole;
        while (!rest.empty()) {
            const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
            if (written <= 0)
                return;
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    }
};

} // namespace

std::unique_ptr<LogSink> systemLogSink(const char* ident)
{
    if (access("/dev/log", W_OK) != 0)
        return nullptr;
    return std::make_unique<SystemLogSink>(ident);
}

std::unique_ptr<LogSink> standardErrorSink()
{
    return std::make_unique<StandardErrorSink>();
}

std::unique_ptr<Log> makeProgramLog(const char* ident, bool echoToTerminal)
{
    std::vector<std::unique_ptr<LogSink>> sinks;
    if (auto sink = systemLogSink(ident))
        sinks.push_back(std::move(sink));
    const char* wish = std::getenv("QUORVANE_LOG");
    const bool asked = wish != nullptr && std::string_view(wish) == "stderr";
    if (asked || (echoToTerminal && isatty(STDERR_FILENO) == 1))
        sinks.push_back(standardErrorSink());
    return std::make_unique<Log>(std::move(sinks));
}

} // namespace quorvane::platform
