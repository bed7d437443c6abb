#pragma once

#include "rules/RuleRef.h"

#include <unordered_set>

class QTableView;

namespace quorvane {

class RuleCellsModel;

// What is selected in a rules table and where it is scrolled to, told by the rules and not by their rows, so
// that it outlives a reload.
class KeptSelection {
public:
    KeptSelection(const QTableView& table, const RuleCellsModel& model);

    // Selects the rules that are still rows, and scrolls to where the table was: the first rule that was in
    // view is the first again while it exists.
    void restore(QTableView& table, const RuleCellsModel& model) const;

private:
    std::unordered_set<const void*> m_selected;
    const void* m_current = nullptr;
    const void* m_topmost = nullptr;
    int m_topmostRow = 0;
};

} // namespace quorvane
