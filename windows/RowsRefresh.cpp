#include "windows/RowsRefresh.h"

#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace quorvane::windows {

namespace {

// Fewer are sorted or searched in some ten milliseconds.
constexpr std::size_t manyRules = 20'000;

} // namespace

RowsRefresh::RowsRefresh(rules::RuleManager& store, workflow::Background& thread)
    : m_store(store)
    , m_thread(thread)
{
    connect(&m_slowness, &SlowWork::slownessDidChange, this, &RowsRefresh::slownessDidChange);
}

RowsRefresh::~RowsRefresh()
{
    m_stop.request_stop();
}

bool RowsRefresh::start()
{
    m_stop.request_stop();
    m_stop = {};
    auto computation
        = std::make_shared<std::optional<rules::RowsComputation>>(m_store.longComputation(manyRules));
    if (!*computation) {
        finish();
        return false;
    }
    m_isSearch = (*computation)->searchText() != m_searchText;
    m_isWorking = true;
    m_slowness.setWorking(true);
    m_thread.run(
        [computation, stop = m_stop.get_token()] {
            try {
                if (!(*computation)->run(stop))
                    computation->reset();
            } catch (const std::bad_alloc&) {
                computation->reset(); // the store tries again, and reports it
            }
        },
        [this, computation, stop = m_stop.get_token()] {
            if (stop.stop_requested())
                return;
            if (*computation)
                m_store.adopt(std::move(**computation));
            finish();
            Q_EMIT done();
        });
    return true;
}

void RowsRefresh::finish()
{
    m_isWorking = false;
    m_searchText = m_store.searchText();
    m_slowness.setWorking(false);
}

} // namespace quorvane::windows
