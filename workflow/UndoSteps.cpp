#include "workflow/UndoSteps.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace quorvane::workflow {

namespace {

constexpr std::size_t mostSteps = 50; // each may contain a large number of rules

void dropLast(std::vector<UndoSteps::Step>& steps)
{
    if (!steps.empty())
        steps.pop_back();
}

} // namespace

void UndoSteps::remember(std::shared_ptr<const rules::ChangeSet> done, const ChangeReason& reason)
{
    if (done->isEmpty())
        return;
    Step step{.number = ++m_last, .done = std::move(done), .reason = reason, .version = reason.of};
    if (reason.kind == ChangeReason::Kind::undo) {
        dropLast(m_done);
        m_undone.push_back(std::move(step));
        return;
    }
    if (reason.kind == ChangeReason::Kind::redo)
        dropLast(m_undone);
    else
        m_undone.clear();
    m_done.push_back(std::move(step));
    if (m_done.size() > mostSteps)
        m_done.erase(m_done.begin());
}

void UndoSteps::noteVersion(std::uint64_t number, std::optional<std::int64_t> version)
{
    const auto written
        = std::find_if(m_done.begin(), m_done.end(), [&](const Step& each) { return each.number == number; });
    if (written != m_done.end() && written->reason.kind == ChangeReason::Kind::action)
        written->version = version;
}

void UndoSteps::forget()
{
    m_done.clear();
    m_undone.clear();
}

} // namespace quorvane::workflow
