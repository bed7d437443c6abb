#include "windows/ProblemsFinder.h"

#include "rules/RuleManager.h"

#include <new>
#include <utility>

namespace quorvane::windows {

ProblemsFinder::ProblemsFinder(const rules::RuleManager& store)
    : m_store(store)
    , m_known(nothingKnown())
{
}

ProblemsFinder::~ProblemsFinder()
{
    m_stop.request_stop();
}

std::shared_ptr<workflow::KnownProblems> ProblemsFinder::nothingKnown() const
{
    return std::make_shared<workflow::KnownProblems>(m_place, m_store.locations().userRulesFile());
}

void ProblemsFinder::start()
{
    const bool hasFailed = !m_problems && !m_isLooking;
    if (!std::exchange(m_isWanted, true) || hasFailed)
        rulesDidChange();
}

void ProblemsFinder::setFindsOverlaps(const QObject& asker, bool finds)
{
    const bool didFind = !m_askForOverlaps.isEmpty();
    if (finds)
        m_askForOverlaps.insert(&asker);
    else
        m_askForOverlaps.remove(&asker);
    if (!m_askForOverlaps.isEmpty() != didFind)
        rulesDidChange();
}

void ProblemsFinder::setPlace(const workflow::RulesPlace& place)
{
    m_place = place;
    lookAgain();
}

void ProblemsFinder::lookAgain()
{
    m_stop.request_stop();
    m_stop = {};
    // A running search keeps the old one alive.
    m_known = nothingKnown();
    rulesDidChange();
}

void ProblemsFinder::rulesDidChange()
{
    if (!m_isWanted)
        return;
    if (m_isLooking)
        m_isBehind = true;
    else
        look();
}

void ProblemsFinder::look()
{
    m_isLooking = true;
    m_isBehind = false;
    auto problems = std::make_shared<workflow::ProblemListsPtr>();
    m_thread.run(
        [=, known = m_known, rules = m_store.storedRows(), findsOverlaps = !m_askForOverlaps.isEmpty(),
            stop = m_stop.get_token()] {
            try {
                *problems = known->follow(rules, findsOverlaps, stop);
            } catch (const std::bad_alloc&) {
                problems->reset();
            }
        },
        [this, problems, stop = m_stop.get_token()] {
            m_isLooking = false;
            if (m_isBehind || stop.stop_requested())
                look();
            if (!stop.stop_requested())
                wasFound(*problems);
        });
}

void ProblemsFinder::wasFound(const workflow::ProblemListsPtr& problems)
{
    workflow::ProblemListsPtr former = std::exchange(m_problems, problems);
    Q_EMIT found(problems);
    freeInBackground(m_thread, std::move(former));
}

} // namespace quorvane::windows
