#pragma once

#include "rules/ChangeSet.h"
#include "workflow/ChangeReason.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane::workflow {

// The latest actions of a run, each with what it did, to be taken back and done again without asking the
// journal. As many as are worth their memory. One thread.
class UndoSteps {
public:
    struct Step {
        std::uint64_t number = 0;
        rules::ChangeSet done{};
        ChangeReason reason{};
        std::optional<std::int64_t> version{}; // of the journal; none until it is written, or without one
    };

    // An action, which leaves nothing to do again; or an undo or redo of the step that is next for it. What
    // changed nothing is no step.
    void remember(const rules::ChangeSet& done, const ChangeReason& reason);
    // The action of that number has become a version.
    void noteVersion(std::uint64_t number, std::optional<std::int64_t> version);
    void forget();

    // Null when there is none.
    const Step* toUndo() const { return m_done.empty() ? nullptr : &m_done.back(); }
    const Step* toRedo() const { return m_undone.empty() ? nullptr : &m_undone.back(); }

    // The number of the step remembered last.
    std::uint64_t last() const { return m_last; }

private:
    std::vector<Step> m_done; // the newest last
    std::vector<Step> m_undone; // the newest last
    std::uint64_t m_last = 0;
};

} // namespace quorvane::workflow
