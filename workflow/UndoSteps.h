#pragma once

#include "rules/ChangeSet.h"
#include "workflow/ChangeReason.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace quorvane::workflow {

// The latest actions of a run, each with its change, to be undone and redone without reading the journal.
// Bounded in number. One thread at a time.
class UndoSteps {
public:
    struct Step {
        std::uint64_t number = 0; // of the action, also once it is undone or redone
        std::shared_ptr<const rules::ChangeSet> done{};
        ChangeReason reason{};
        std::optional<std::int64_t>
            version{}; // of the action in the journal; none before it is written, or without a journal
    };

    // Records an action, which clears the redo steps; or an undo or redo of the next step. Returns the number
    // of the action; 0 for an empty change, which is no step.
    std::uint64_t remember(std::shared_ptr<const rules::ChangeSet> done, const ChangeReason& reason);
    // Records the version of the action with that number.
    void noteVersion(std::uint64_t number, std::optional<std::int64_t> version);
    void forget();

    // Null when there is none.
    const Step* toUndo() const { return m_done.empty() ? nullptr : &m_done.back(); }
    const Step* toRedo() const { return m_undone.empty() ? nullptr : &m_undone.back(); }

private:
    std::vector<Step> m_done; // the newest last
    std::vector<Step> m_undone; // the newest last
    std::uint64_t m_last = 0;
};

} // namespace quorvane::workflow
