#include "windows/TableNarrowing.h"

#include "rules/RuleManager.h"
#include "windows/NarrowBar.h"
#include "windows/ProblemsFinder.h"

#include <algorithm>
#include <utility>

namespace quorvane::windows {

TableNarrowing::TableNarrowing(NarrowBar& bar, const rules::RuleManager& store, ProblemsFinder& finder)
    : m_bar(bar)
    , m_store(store)
    , m_finder(finder)
{
    m_bar.hide();
    connect(&m_bar, &NarrowBar::criteriaChanged, this, &TableNarrowing::narrow);
    connect(&m_finder, &ProblemsFinder::found, this, &TableNarrowing::problemsWereFound);
}

TableNarrowing::~TableNarrowing()
{
    m_stop.request_stop();
    m_namesStop.request_stop();
}

void TableNarrowing::setShown(bool isShown)
{
    m_isShown = isShown;
    m_bar.setVisible(isShown);
    if (isShown)
        offerNames();
    else if (!m_bar.criteria().isEmpty())
        m_bar.clear();
}

void TableNarrowing::rulesDidChange()
{
    if (m_isShown)
        offerNames();
}

void TableNarrowing::narrow()
{
    m_stop.request_stop(); // only the latest choice counts
    m_stop = {};
    const workflow::RuleCriteria criteria = m_bar.criteria();
    const auto& findings = criteria.findings;
    m_finder.setFindsOverlaps(
        *this, std::find(findings.begin(), findings.end(), workflow::FindingKind::overlap) != findings.end());
    m_bar.setStatus({});
    if (criteria.isEmpty())
        return use(nullptr);
    if (!findings.empty()) {
        m_finder.start();
        if (m_finder.isLooking())
            return m_bar.setStatus(tr("Looking\u2026"));
        if (!m_finder.problems())
            return m_bar.setStatus(tr("Not known"));
    }
    auto narrowing = std::make_shared<std::shared_ptr<workflow::Narrowing>>();
    m_thread.run(
        [narrowing, criteria, problems = m_finder.problems(), rows = m_store.storedRows(),
            stop = m_stop.get_token()] {
            auto made = std::make_shared<workflow::Narrowing>(criteria, problems);
            if (made->follow(*rows, stop))
                *narrowing = std::move(made);
        },
        [this, narrowing, stop = m_stop.get_token()] {
            if (!stop.stop_requested())
                use(*narrowing);
        });
}

void TableNarrowing::use(std::shared_ptr<workflow::Narrowing> narrowing)
{
    auto former = std::exchange(m_narrowing, std::move(narrowing));
    Q_EMIT narrowed(m_narrowing);
    // Freed on the thread, since freeing long lists of problems takes a while.
    m_thread.run([former = std::move(former)]() mutable { former.reset(); }, [] {});
}

void TableNarrowing::problemsWereFound()
{
    if (!m_bar.criteria().findings.empty())
        narrow();
}

void TableNarrowing::offerNames()
{
    m_namesStop.request_stop();
    m_namesStop = {};
    auto names = std::make_shared<workflow::NamesInUse>();
    m_namesThread.run([names, rows = m_store.storedRows(),
                          stop = m_namesStop.get_token()] { *names = workflow::namesInUse(*rows, stop); },
        [this, names, stop = m_namesStop.get_token()] {
            if (!stop.stop_requested())
                m_bar.setNames(*names);
        });
}

} // namespace quorvane::windows
