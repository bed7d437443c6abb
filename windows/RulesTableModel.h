#pragma once

#include "rules/RuleManager.h"
#include "windows/RuleCellsModel.h"
#include "workflow/Narrowing.h"
#include "workflow/RulesSelection.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace quorvane::windows {

// The rows of a rule store as a Qt table. Keeps the rows it last showed until it is told to reload.
class RulesTableModel : public RuleCellsModel {
    Q_OBJECT
public:
    // Neither is owned.
    RulesTableModel(
        const rules::RuleManager& store, desktop::Workspace& workspace, QObject* parent = nullptr);

    bool showsSystemRules() const { return m_showsSystemRules; }
    // Takes effect with the next reload.
    void setShowsSystemRules(bool shows) { m_showsSystemRules = shows; }

    // Where programs and paths are looked up. Takes effect with the next reload.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Of the store's rows only those that it leaves are shown; null for all. Takes effect with the next
    // reload.
    void setNarrowing(std::shared_ptr<workflow::Narrowing> narrowing) { m_narrowing = std::move(narrowing); }

    // Takes the store's present rows.
    void reload();

    // How many of the store's rows are not shown: those of the system, and those that the narrowing leaves
    // out. Until the store's rows change.
    std::size_t hiddenSystemRules() const;
    std::size_t leftOutRules() const;

    // The store has lost one run of the rows: takes them away while all others keep their cells. False, and
    // nothing has changed, when the rows differ in another way; then a reload is due.
    bool removeRules();

    // Of these ranges of rows, which ascend.
    workflow::RulesSelection selectionOf(std::vector<workflow::RulesSelection::Range> ranges) const;

    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // A tag as it was typed: shown until the next reload, whatever becomes of it; see tagTyped().
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    // Somebody has finished editing a tag in the table.
    void tagTyped(const QString& tag);

protected:
    workflow::RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    std::shared_ptr<const rules::RuleRows> presentRows() const;

    const rules::RuleManager& m_store;
    std::shared_ptr<workflow::Narrowing> m_narrowing;
    bool m_showsSystemRules = false;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
};

} // namespace quorvane::windows
