#include "windows/ImportTableModel.h"

#include "workflow/ImportCells.h"
#include "workflow/ImportForesight.h"

namespace quorvane::windows {

namespace {

bool reviewIsShaded = false; // shared by all reviews of the process

constexpr int tickColumn = static_cast<int>(workflow::ImportColumn::tick);

} // namespace

ImportTableModel::ImportTableModel(const rules::RuleManager& present, const workflow::StateDict& ticks,
    desktop::Workspace& workspace, QObject* parent)
    : RuleCellsModel(
        workflow::importColumnCount, std::make_shared<rules::RuleRows>(), workspace, reviewIsShaded, parent)
    , m_present(present)
    , m_ticks(ticks)
{
}

void ImportTableModel::reload(const rules::RuleManager& reviewed)
{
    reload(reviewed, reviewed.rows());
}

void ImportTableModel::reload(const rules::RuleManager& reviewed, std::shared_ptr<const rules::RuleRows> rows)
{
    m_reviewed = &reviewed;
    m_showsAll = rows->count(false) == reviewed.totalRules(false);
    setRows(std::move(rows), false);
    ticksDidChange();
}

void ImportTableModel::ticksDidChange()
{
    m_ticked.reset();
    if (rowCount() > 0)
        Q_EMIT dataChanged(index(0, tickColumn), index(rowCount() - 1, tickColumn), {Qt::CheckStateRole});
    Q_EMIT headerDataChanged(Qt::Horizontal, tickColumn, tickColumn);
}

std::size_t ImportTableModel::countOfTicked() const
{
    if (m_showsAll)
        return m_ticks.countOfTicked(static_cast<std::size_t>(rowCount()));
    if (m_ticked)
        return *m_ticked;
    std::size_t ticked = 0;
    for (int row = 0; row < rowCount(); ++row)
        ticked += m_ticks.isTicked(workflow::sequenceOf(ruleAt(row))) ? 1U : 0U;
    m_ticked = ticked;
    return ticked;
}

Qt::CheckState ImportTableModel::commonTick() const
{
    const auto rules = static_cast<std::size_t>(rowCount());
    const std::size_t ticked = countOfTicked();
    if (ticked == 0)
        return Qt::Unchecked;
    return ticked == rules ? Qt::Checked : Qt::PartiallyChecked;
}

QVariant ImportTableModel::data(const QModelIndex& index, int role) const
{
    if (role != Qt::CheckStateRole)
        return RuleCellsModel::data(index, role);
    if (!index.isValid() || index.row() >= rowCount() || index.column() != tickColumn)
        return {};
    return m_ticks.isTicked(workflow::sequenceOf(ruleAt(index.row()))) ? Qt::Checked : Qt::Unchecked;
}

bool ImportTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::CheckStateRole || !index.isValid() || index.column() != tickColumn)
        return false;
    Q_EMIT checkBoxClicked(
        workflow::sequenceOf(ruleAt(index.row())), value.value<Qt::CheckState>() == Qt::Checked);
    return true;
}

QVariant ImportTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section != tickColumn)
        return RuleCellsModel::headerData(section, orientation, role);
    switch (role) {
    case Qt::CheckStateRole:
        return commonTick();
    case Qt::AccessibleTextRole:
        return tr("Import");
    case Qt::AccessibleDescriptionRole:
        switch (commonTick()) {
        case Qt::Checked:
            return tr("all rules ticked");
        case Qt::Unchecked:
            return tr("no rule ticked");
        case Qt::PartiallyChecked:
            return tr("some rules ticked");
        }
        return {};
    case Qt::ToolTipRole:
        return tr("Tick or untick all rules");
    default:
        return RuleCellsModel::headerData(section, orientation, role);
    }
}

Qt::ItemFlags ImportTableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = RuleCellsModel::flags(index);
    return index.column() == tickColumn ? flags | Qt::ItemIsUserCheckable : flags;
}

workflow::RuleCell ImportTableModel::makeCell(std::size_t row, int column) const
{
    return importCell(
        *m_reviewed, m_present, rows(), row, static_cast<workflow::ImportColumn>(column), m_place);
}

std::string_view ImportTableModel::titleOf(int column) const
{
    return importColumnTitle(static_cast<workflow::ImportColumn>(column));
}

} // namespace quorvane::windows
