#pragma once

#include <QString>

#include <optional>
#include <vector>

class QTableView;

namespace quorvane::windows {

class RuleCellsModel;

// What is selected in a rules table, where it is scrolled to and what is being typed in one of its cells,
// told by the rules' records and not by their rows, so that it outlives a reload.
class SelectionState {
public:
    SelectionState(const QTableView& table, const RuleCellsModel& model);

    // Selects the rules that are still rows, and scrolls to where the table was: the first rule that was in
    // view is the first again while it exists. What was being typed goes on in the cell of the same rule,
    // and is dropped when that is gone.
    void restore(QTableView& table, const RuleCellsModel& model) const;

private:
    // A text in the making, in the row that has the keyboard.
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
