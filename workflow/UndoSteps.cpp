#include "workflow/UndoSteps.h"

#include <cstddef>
#include <utility>

namespace quorvane::workflow {

namespace {

constexpr std::size_t mostSteps = 50; // each may contain a large number of rules

std::optional<UndoSteps::Step> takeLast(std::vector<UndoSteps::Step>& steps)
{
    if (steps.empty())
        return std::nullopt;
    std::optional<UndoSteps::Step> last(std::move(steps.back()));
    steps.pop_back();
    return last;
}

} // namespace

std::uint64_t UndoSteps::remember(std::shared_ptr<const rules::ChangeSet> done, const ChangeReason& reason)
{
    if (done->isEmpty())
        return 0;
    const bool isAction = reason.kind == ChangeReason::Kind::action;
    const bool isUndo = reason.kind == ChangeReason::Kind::undo;
    if (isAction)
        m_undone.clear();
    // None when it undoes or redoes a version of the journal.
    const std::optional<Step> former = isAction ? std::nullopt : takeLast(isUndo ? m_done : m_undone);
    Step step{.done = std::move(done), .reason = reason, .version = reason.of};
    step.number = former ? former->number : ++m_last;
    if (former && !step.version)
        step.version = former->version;
    auto& steps = isUndo ? m_undone : m_done;
    steps.push_back(std::move(step));
    const std::uint64_t number = steps.back().number;
    if (m_done.size() > mostSteps)
        m_done.erase(m_done.begin());
    return number;
}

void UndoSteps::noteVersion(std::uint64_t number, std::optional<std::int64_t> version)
{
    for (auto* steps : {&m_done, &m_undone}) {
        for (Step& step : *steps) {
            if (step.number == number)
                step.version = version;
        }
    }
}

void UndoSteps::forget()
{
    m_done.clear();
    m_undone.clear();
}

} // namespace quorvane::workflow
