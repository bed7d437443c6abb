#include "windows/ProblemsModel.h"

#include "rules/ApplicationIdentity.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "workflow/RuleProblems.h"
#include "workflow/RuleSentence.h"

#include <algorithm>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr std::size_t page = 500;
constexpr std::size_t farDown = 20000; // beyond this a view would take long to get there

// The identifier of an index: 0 for a kind, and for a problem one more than its kind.
quintptr identifierOf(workflow::FindingKind kind)
{
    return static_cast<quintptr>(kind) + 1;
}

QString ruleName(const workflow::KnownProblem& problem)
{
    return visitRule(problem.rule, [](const auto& rule) {
        return toQt(shownApplicationNameForRule(rule) + "  " + std::string(rule.fields().path.view()));
    });
}

QString explanation(const workflow::KnownProblem& problem)
{
    const QString sentence = toQt(workflow::ruleSentence(valueOf(problem.rule)));
    const QString text = problem.other ? toQt(problemWith(problem.finding.kind, valueOf(*problem.other)).text)
                                       : toQt(findingText(problem.finding));
    return sentence + QLatin1Char('\n') + text;
}

} // namespace

void ProblemsModel::setProblems(workflow::ProblemListsPtr problems)
{
    beginResetModel();
    m_problems = problems ? std::move(problems) : std::make_shared<const workflow::ProblemLists>();
    arrange();
    endResetModel();
}

void ProblemsModel::setShownKinds(const workflow::FindingKinds& kinds)
{
    beginResetModel();
    m_kinds = kinds;
    arrange();
    endResetModel();
}

void ProblemsModel::arrange()
{
    m_rows.clear();
    for (const workflow::FindingKind kind : workflow::allFindingKinds) {
        if (m_kinds.contains(kind) && !list(kind).empty())
            m_rows.push_back(kind);
        m_fetched[static_cast<std::size_t>(kind)] = std::min(page, list(kind).size());
    }
}

const std::vector<workflow::KnownProblem>& ProblemsModel::list(workflow::FindingKind kind) const
{
    return m_problems->of(kind);
}

std::size_t ProblemsModel::count() const
{
    std::size_t count = 0;
    for (const workflow::FindingKind kind : m_rows)
        count += list(kind).size();
    return count;
}

std::optional<workflow::FindingKind> ProblemsModel::kindAt(const QModelIndex& index) const
{
    return index.isValid() && index.internalId() == 0
        ? std::optional(m_rows[static_cast<std::size_t>(index.row())])
        : std::nullopt;
}

std::optional<ProblemsModel::Place> ProblemsModel::placeOf(const QModelIndex& index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return std::nullopt;
    return Place{
        static_cast<workflow::FindingKind>(index.internalId() - 1), static_cast<std::size_t>(index.row())};
}

const workflow::KnownProblem* ProblemsModel::problemAt(const QModelIndex& index) const
{
    const auto place = placeOf(index);
    return place ? &problemAt(*place) : nullptr;
}

const workflow::KnownProblem& ProblemsModel::problemAt(const Place& place) const
{
    return list(place.kind)[place.number];
}

QModelIndex ProblemsModel::indexOf(const Place& place)
{
    const auto row = std::find(m_rows.begin(), m_rows.end(), place.kind);
    if (row == m_rows.end() || place.number >= farDown)
        return {};
    const QModelIndex kind = index(static_cast<int>(row - m_rows.begin()), 0);
    while (canFetchMore(kind) && m_fetched[static_cast<std::size_t>(place.kind)] <= place.number)
        fetchMore(kind);
    return index(static_cast<int>(place.number), 0, kind);
}

std::optional<ProblemsModel::Place> ProblemsModel::end(bool atFront) const
{
    if (m_rows.empty())
        return std::nullopt;
    return atFront ? Place{m_rows.front(), 0} : Place{m_rows.back(), list(m_rows.back()).size() - 1};
}

std::optional<ProblemsModel::Place> ProblemsModel::neighbour(
    const Place& place, bool hasLeft, bool forward) const
{
    const bool isShown = std::find(m_rows.begin(), m_rows.end(), place.kind) != m_rows.end();
    const std::size_t size = isShown ? list(place.kind).size() : 0;
    const std::size_t behind = place.number + (hasLeft ? 0 : 1);
    if (forward && behind < size)
        return Place{place.kind, behind};
    if (!forward && place.number > 0 && size > 0)
        return Place{place.kind, std::min(place.number, size) - 1};
    // The kinds are in their order.
    if (forward) {
        const auto next = std::upper_bound(m_rows.begin(), m_rows.end(), place.kind);
        return next == m_rows.end() ? end(true) : Place{*next, 0};
    }
    const auto next = std::lower_bound(m_rows.begin(), m_rows.end(), place.kind);
    return next == m_rows.begin() ? end(false) : Place{*(next - 1), list(*(next - 1)).size() - 1};
}

QModelIndex ProblemsModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const auto kind = kindAt(parent);
    return createIndex(row, column, kind ? identifierOf(*kind) : 0);
}

QModelIndex ProblemsModel::parent(const QModelIndex& index) const
{
    const auto place = placeOf(index);
    if (!place)
        return {};
    const auto row = std::find(m_rows.begin(), m_rows.end(), place->kind);
    return row == m_rows.end() ? QModelIndex()
                               : createIndex(static_cast<int>(row - m_rows.begin()), 0, quintptr{0});
}

int ProblemsModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_rows.size());
    const auto kind = kindAt(parent);
    return kind ? static_cast<int>(m_fetched[static_cast<std::size_t>(*kind)]) : 0;
}

int ProblemsModel::columnCount(const QModelIndex& /*parent*/) const
{
    return 1;
}

bool ProblemsModel::hasChildren(const QModelIndex& parent) const
{
    return !parent.isValid() || kindAt(parent);
}

bool ProblemsModel::canFetchMore(const QModelIndex& parent) const
{
    const auto kind = kindAt(parent);
    return kind && m_fetched[static_cast<std::size_t>(*kind)] < list(*kind).size();
}

void ProblemsModel::fetchMore(const QModelIndex& parent)
{
    const auto kind = kindAt(parent);
    if (!kind)
        return;
    std::size_t& fetched = m_fetched[static_cast<std::size_t>(*kind)];
    const std::size_t more = std::min(page, list(*kind).size() - fetched);
    beginInsertRows(parent, static_cast<int>(fetched), static_cast<int>(fetched + more) - 1);
    fetched += more;
    endInsertRows();
}

QVariant ProblemsModel::data(const QModelIndex& index, int role) const
{
    if (const auto kind = kindAt(index)) {
        if (role == Qt::DisplayRole)
            return QStringLiteral("%1 (%2)").arg(toQt(findingTitle(*kind)), inWords(list(*kind).size()));
        return role == Qt::ToolTipRole ? plainToolTip(toQt(findingKindText(*kind))) : QVariant();
    }
    const workflow::KnownProblem* problem = problemAt(index);
    if (problem == nullptr)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return ruleName(*problem);
    case Qt::ToolTipRole:
        return plainToolTip(explanation(*problem));
    case Qt::AccessibleDescriptionRole:
        return explanation(*problem);
    default:
        return {};
    }
}

} // namespace quorvane::windows
