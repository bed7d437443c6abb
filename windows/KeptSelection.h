#pragma once

#include "rules/RuleRef.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

class QTableView;

namespace quorvane {

class RuleCellsModel;

// What makes a rule the one it was before a reload: being the very record, or, when all records are made
// anew, an equal one.
enum class RuleIdentity { record, properties };

// What is selected in a rules table, where it is scrolled to and what is being typed in one of its cells,
// told by the rules and not by their rows, so that it outlives a reload.
class KeptSelection {
public:
    KeptSelection(
        const QTableView& table, const RuleCellsModel& model, RuleIdentity sameRule = RuleIdentity::record);

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

    std::uint64_t identityOf(const RuleRef& rule) const;

    const RuleIdentity m_sameRule;
    std::vector<std::uint64_t> m_selected; // ascending
    std::optional<std::uint64_t> m_current;
    std::optional<Typed> m_typed;
    std::optional<std::uint64_t> m_topmost;
    int m_topmostRow = 0;
};

} // namespace quorvane
