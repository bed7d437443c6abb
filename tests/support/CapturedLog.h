#pragma once

#include "platform/Log.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace quorvane::test {

// A log whose lines a test reads.
class CapturedLog {
public:
    CapturedLog()
        : m_lines(std::make_shared<std::vector<std::string>>())
        , m_log(sinksFor(m_lines))
    {
    }

    platform::Log& log() { return m_log; }

    // Everything logged so far.
    std::vector<std::string> lines()
    {
        m_log.flush();
        return *m_lines;
    }

private:
    class Sink : public platform::LogSink {
    public:
        explicit Sink(std::shared_ptr<std::vector<std::string>> lines)
            : m_lines(std::move(lines))
        {
        }
        void writeLine(const std::string& line) override { m_lines->push_back(line); }

    private:
        std::shared_ptr<std::vector<std::string>> m_lines;
    };

    static std::vector<std::unique_ptr<platform::LogSink>> sinksFor(
        const std::shared_ptr<std::vector<std::string>>& lines)
    {
        std::vector<std::unique_ptr<platform::LogSink>> sinks;
        sinks.push_back(std::make_unique<Sink>(lines));
        return sinks;
    }

    std::shared_ptr<std::vector<std::string>> m_lines;
    platform::Log m_log;
};

} // namespace quorvane::test
