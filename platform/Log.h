#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quorvane::platform {

// A destination of log lines. Never called by two threads at once.
class LogSink {
public:
    virtual ~LogSink() = default;
    virtual void writeLine(const std::string& line) = 0;
};

// The log: one line per event, without levels, in the order of the calls.
//
// Lines are queued and written by a thread of the log's own, so that a slow reader of the log never holds up
// the caller. The queue is bounded: further lines are dropped and their count is logged instead. Where no
// thread can be created, the calling thread writes the lines, and the first line says so. All operations are
// safe from any thread and throw nothing.
class Log {
public:
    // Starts the writing thread if there is any sink.
    explicit Log(std::vector<std::unique_ptr<LogSink>> sinks);
    // Writes what is queued and joins the thread.
    ~Log();
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    // False when there is no sink. Check it before composing lines in a loop.
    bool isListening() const { return !m_sinks.empty(); }

    // Queues one line, given without its line end. A line that there is no memory for counts as dropped.
    void write(std::string line);

    // Waits until everything queued so far has been written.
    void flush();

private:
    bool queue(std::string line);
    void writeQueuedLines();
    void writeNow(const std::string& line);
    void writeToSinks(const std::string& line);

    static constexpr std::size_t s_largestQueue = 64U << 20U; // bytes

    const std::vector<std::unique_ptr<LogSink>> m_sinks;
    std::mutex m_mutex;
    std::condition_variable m_queued;
    std::condition_variable m_written;
    std::vector<std::string> m_queue;
    std::size_t m_queueSize = 0; // bytes
    std::size_t m_dropped = 0; // lines
    bool m_writing = false;
    bool m_ending = false;
    std::thread m_thread;
};

// Lines to syslog(3) under `ident`, or none when the machine runs no system log.
std::unique_ptr<LogSink> systemLogSink(const char* ident);

// Lines to standard error, each written with one system call.
std::unique_ptr<LogSink> standardErrorSink();

// The log of a program: the system log, and standard error when QUORVANE_LOG is "stderr" or when
// `echoToTerminal` is set and standard error is a terminal.
std::unique_ptr<Log> makeProgramLog(const char* ident, bool echoToTerminal);

} // namespace quorvane::platform
