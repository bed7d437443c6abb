#pragma once

#include "rules/RuleManager.h"
#include "windows/RuleCellsModel.h"
#include "workflow/StateDict.h"

#include <cstddef>
#include <optional>

namespace quorvane::windows {

// The rules of a file under review as a Qt table, with a check box for each and one for all in the header.
// User interface thread only.
class ImportTableModel : public RuleCellsModel {
    Q_OBJECT
public:
    // Rules that `present` contains as well are marked. Owns no argument; all must outlive the model.
    ImportTableModel(const rules::RuleManager& present, const workflow::StateDict& ticks,
        desktop::Workspace& workspace, QObject* parent = nullptr);

    // Sets where programs and paths are looked up. Takes effect with the next reload.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Shows the current rows of `reviewed`, which must live until the next call, or as long as the model.
    void reload(const rules::RuleManager& reviewed);
    // Shows only these of its rows.
    void reload(const rules::RuleManager& reviewed, std::shared_ptr<const rules::RuleRows> rows);

    // Call it after any number of ticks were changed.
    void ticksDidChange();
    // How many of the shown rules are ticked.
    std::size_t countOfTicked() const;
    // Whether all, none or some of the shown rules are ticked.
    Qt::CheckState commonTick() const;

    QVariant data(const QModelIndex& index, int role) const override;
    // Changes no tick by itself: see checkBoxClicked().
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    // The user wants the rule with this sequence number ticked or unticked.
    void checkBoxClicked(qint64 sequence, bool isTicked);

protected:
    workflow::RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    const rules::RuleManager& m_present;
    const workflow::StateDict& m_ticks;
    const rules::RuleManager* m_reviewed = nullptr; // null until there are rows
    bool m_showsAll = true; // all of its rows, not only some
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine().withoutHomes();
    mutable std::optional<std::size_t> m_ticked; // shown rules that are ticked; none until requested
};

} // namespace quorvane::windows
