#pragma once

#include "rules/RuleManager.h"
#include "windows/RuleCellsModel.h"
#include "workflow/StateDict.h"

#include <cstddef>
#include <optional>

namespace quorvane::windows {

// The rules of a file under review as a Qt table, with a check box for each, and one above them for all.
class ImportTableModel : public RuleCellsModel {
    Q_OBJECT
public:
    // Rules that `present` holds as well are marked. Nothing given is owned; all of it must outlive the
    // model.
    ImportTableModel(const rules::RuleManager& present, const workflow::StateDict& ticks,
        desktop::Workspace& workspace, QObject* parent = nullptr);

    // Where programs and paths are looked up. Takes effect with the next reload.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Shows the rows that `reviewed` has now. It must live until the next call, or as long as the model.
    void reload(const rules::RuleManager& reviewed);
    // Shows these of them alone.
    void reload(const rules::RuleManager& reviewed, std::shared_ptr<const rules::RuleRows> rows);

    // Ticks were changed; any number of them.
    void ticksDidChange();
    // How many of the rules that are shown are ticked.
    std::size_t countOfTicked() const;
    // Whether all rules that are shown are ticked, or none, or some.
    Qt::CheckState commonTick() const;

    QVariant data(const QModelIndex& index, int role) const override;
    // Changes no tick by itself: see checkBoxClicked().
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

Q_SIGNALS:
    // Somebody wants the rule of this sequence number ticked, or not.
    void checkBoxClicked(qint64 sequence, bool isTicked);

protected:
    workflow::RuleCell makeCell(std::size_t row, int column) const override;
    std::string_view titleOf(int column) const override;

private:
    const rules::RuleManager& m_present;
    const workflow::StateDict& m_ticks;
    const rules::RuleManager* m_reviewed = nullptr; // none until there are rows
    bool m_showsAll = true; // its rows, and not only some
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine().withoutHomes();
    mutable std::optional<std::size_t> m_ticked; // rules that are shown; none until it is asked for
};

} // namespace quorvane::windows
