#include "windows/AccessModel.h"

#include "rules/ApplicationIdentity.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"

#include <algorithm>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr std::size_t mostNames = 3; // of programs in a cell
constexpr std::size_t mostNamesInToolTip = 40;
constexpr std::size_t longestText = 4000; // bytes; no cell shows more

QString shown(const std::string& text)
{
    return text.size() <= longestText ? toQt(text)
                                      : toQt(std::string_view(text).substr(0, longestText)) + QChar(0x2026);
}

std::size_t total(const workflow::AccessCounts& counts)
{
    return counts.allow + counts.deny + counts.watch;
}

QString shortName(const std::string& process)
{
    const rules::NullableText text(process);
    const QString name = toQt(applicationNameForProcess(text));
    const auto parent = applicationParentNameForProcess(text);
    return parent ? AccessModel::tr("%1 via %2").arg(name, toQt(*parent)) : name;
}

// `nameOf`: the display name of a process.
QString programsText(
    const workflow::AccessBranch& branch, std::size_t most, QString (*nameOf)(const std::string&))
{
    QStringList names;
    for (std::size_t place = 0; place < std::min(most, branch.programs.size()); ++place) {
        const auto& [process, rules] = branch.programs[place];
        const QString name = process.empty() ? AccessModel::tr("no program") : nameOf(process);
        names.append(rules == 1 ? name : AccessModel::tr("%1 (%2)").arg(name, inWords(rules)));
    }
    if (branch.programs.size() > most)
        names.append(AccessModel::tr("%1 more").arg(inWords(branch.programs.size() - most)));
    return names.join(QStringLiteral(", "));
}

QString titleOf(const workflow::AccessBranch& branch)
{
    switch (branch.kind) {
    case workflow::AccessBranch::Kind::everyPath:
        return AccessModel::tr("Every path");
    case workflow::AccessBranch::Kind::byEnding:
        return AccessModel::tr("Paths by their ending");
    case workflow::AccessBranch::Kind::program:
        return branch.text.empty() ? AccessModel::tr("no program") : shown(branch.title);
    default:
        return shown(branch.title);
    }
}

int alignmentOf(int column)
{
    const bool isNumber = column >= AccessModel::allow && column <= AccessModel::watch;
    return static_cast<int>((isNumber ? Qt::AlignHCenter : Qt::AlignLeft) | Qt::AlignVCenter);
}

} // namespace

QString accessText(const workflow::AccessCounts& counts)
{
    QStringList parts;
    if (counts.allow > 0)
        parts.append(AccessModel::tr("%1 allow").arg(inWords(counts.allow)));
    if (counts.deny > 0)
        parts.append(AccessModel::tr("%1 deny").arg(inWords(counts.deny)));
    if (counts.watch > 0)
        parts.append(AccessModel::tr("%1 watch").arg(inWords(counts.watch)));
    return parts.join(QStringLiteral(", "));
}

void AccessModel::setTree(workflow::AccessTreePtr tree)
{
    beginResetModel();
    m_tree = std::move(tree);
    m_rows.assign(m_tree ? m_tree->branches().size() : 0, 0);
    m_longest.assign(m_rows.size(), 0);
    const auto number = [this](const std::vector<std::size_t>& siblings) {
        std::size_t longest = 0;
        for (const std::size_t branch : siblings)
            longest = std::max(longest, total(m_tree->branches()[branch].counts));
        int row = 0;
        for (const std::size_t branch : siblings) {
            m_rows[branch] = row++;
            m_longest[branch] = longest;
        }
    };
    if (m_tree) {
        number(m_tree->top());
        for (const workflow::AccessBranch& branch : m_tree->branches())
            number(branch.children);
    }
    endResetModel();
}

const std::vector<std::size_t>& AccessModel::branchesIn(const QModelIndex& parent) const
{
    return parent.isValid() ? m_tree->branches()[branchAt(parent)].children : m_tree->top();
}

QModelIndex AccessModel::indexOf(std::size_t branch) const
{
    return createIndex(m_rows[branch], 0, branch);
}

QModelIndex AccessModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, branchesIn(parent)[static_cast<std::size_t>(row)]);
}

QModelIndex AccessModel::parent(const QModelIndex& index) const
{
    const auto parent = index.isValid() ? m_tree->branches()[branchAt(index)].parent : std::nullopt;
    return parent ? indexOf(*parent) : QModelIndex();
}

int AccessModel::rowCount(const QModelIndex& parent) const
{
    return m_tree == nullptr || parent.column() > 0 ? 0 : static_cast<int>(branchesIn(parent).size());
}

int AccessModel::columnCount(const QModelIndex& /*parent*/) const
{
    return columnCountOfAll;
}

QVariant AccessModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const workflow::AccessBranch& branch = m_tree->branches()[branchAt(index)];
    switch (role) {
    case Qt::DisplayRole:
        return textOf(branch, index.column());
    case Qt::ToolTipRole:
        return plainToolTip(index.column() == programs ? programsText(branch, mostNamesInToolTip, shown)
                : branch.text.empty()                  ? accessText(branch.counts)
                                      : shown(branch.text) + QLatin1Char('\n') + accessText(branch.counts));
    case Qt::TextAlignmentRole:
        return alignmentOf(index.column());
    case sharesRole:
        return index.column() == bar ? sharesOf(branchAt(index)) : QVariant();
    default:
        return {};
    }
}

QString AccessModel::textOf(const workflow::AccessBranch& branch, int column) const
{
    const auto number = [](std::size_t count) { return count == 0 ? QString() : inWords(count); };
    switch (column) {
    case place:
        return titleOf(branch);
    case bar:
        return accessText(branch.counts); // for screen readers; painted as a bar
    case allow:
        return number(branch.counts.allow);
    case deny:
        return number(branch.counts.deny);
    case watch:
        return number(branch.counts.watch);
    default:
        return programsText(branch, mostNames, shortName);
    }
}

QVariant AccessModel::sharesOf(std::size_t branch) const
{
    const auto share = [&](std::size_t part) {
        return static_cast<double>(part) / static_cast<double>(m_longest[branch]);
    };
    const workflow::AccessCounts& counts = m_tree->branches()[branch].counts;
    return QVariant::fromValue(AccessShares{share(counts.allow), share(counts.deny), share(counts.watch)});
}

QVariant AccessModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole)
        return alignmentOf(section);
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractItemModel::headerData(section, orientation, role);
    switch (section) {
    case place:
        return tr("Place");
    case bar:
        return tr("Rules");
    case allow:
        return tr("Allow");
    case deny:
        return tr("Deny");
    case watch:
        return tr("Watch");
    default:
        return tr("Programs");
    }
}

} // namespace quorvane::windows
