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

// The rows of a rule store as a Qt table. Keeps the rows it last showed until the next reload. User interface
// thread only.
class RulesTableModel : public RuleCellsModel {
    Q_OBJECT
public:
    // Neither is owned.
    RulesTableModel(
        const rules::RuleManager& store, desktop::Workspace& workspace, QObject* parent = nullptr);

    bool showsSystemRules() const { return m_showsSystemRules; }
    // Takes effect with the next reload.
    void setShowsSystemRules(bool shows) { m_showsSystemRules = shows; }

    // Sets where programs and paths are looked up. Takes effect with the next reload.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Sets a further filter of the store's rows; null for none. Takes effect with the next reload.
    void setNarrowing(std::shared_ptr<workflow::Narrowing> narrowing) { m_narrowing = std::move(narrowing); }

    // Shows the store's current rows.
    void reload();

    // How many of the store's rows were not shown at the last reload: system rules, and those that the
    // narrowing excludes.
    std::size_t hiddenSystemRules() const;
    std::size_t leftOutRules() const { return m_leftOutRules; }

    // Call it when the store has lost one contiguous range of rows: removes them while all others keep their
    // cells. False, without a change, when the rows differ in another way; then call reload().
    bool removeRules();

    // The selection of these ranges of rows, which must be ascending.
    workflow::RulesSelection selectionOf(std::vector<workflow::RulesSelection::Range> ranges) const;

    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Shows a typed tag until the next reload, whether or not it is stored; see tagTyped().
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

Q_SIGNALS:
    // The user has finished editing a tag in the table.
    void tagTyped(const QString& tag);

protected:
    workflow::RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    std::shared_ptr<const rules::RuleRows> presentRows();

    const rules::RuleManager& m_store;
    std::shared_ptr<workflow::Narrowing> m_narrowing;
    bool m_showsSystemRules = false;
    std::size_t m_leftOutRules = 0;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
};

} // namespace quorvane::windows
