#pragma once

#include <QString>

#include <optional>
#include <vector>

class QTableView;

namespace quorvane::windows {

class RuleCellsModel;

// The selection, scroll position and pending edit of a rules table, by the rules' records and not by their
// rows, so that it survives a reload. User interface thread only.
class SelectionState {
public:
    SelectionState(const QTableView& table, const RuleCellsModel& model);

    // Selects the rules that still have rows, and restores the scroll position: the rule that was at the top
    // of the view is at the top again if it exists. An edit in progress continues in the cell of the same
    // rule, and is dropped if that is gone.
    void restore(QTableView& table, const RuleCellsModel& model) const;

private:
    // A pending edit, in the current row.
    struct Typed {
        int column;
        QString text;
        int cursor;
    };

    std::vector<const void*> m_selected; // records, ascending
    const void* m_current = nullptr;
    std::optional<Typed> m_typed;
    const void* m_topmost = nullptr;
    int m_topmostRow = 0;
};

} // namespace quorvane::windows
