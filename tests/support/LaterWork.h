#pragma once

#include "workflow/Background.h"

#include <deque>
#include <functional>
#include <utility>

namespace quorvane::test {

// Runs work when it is waited for.
class LaterWork : public workflow::Background {
public:
    void run(std::function<void()> work, std::function<void()> then) override
    {
        m_work.emplace_back(std::move(work), std::move(then));
    }
    void wait() override
    {
        while (!m_work.empty()) {
            const auto [work, then] = std::move(m_work.front());
            m_work.pop_front();
            work();
            then();
        }
    }

private:
    std::deque<std::pair<std::function<void()>, std::function<void()>>> m_work;
};

} // namespace quorvane::test
