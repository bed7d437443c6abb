#pragma once

#include "workflow/KnownProblems.h"

#include <QAbstractItemModel>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

namespace quorvane::windows {

// Problems of rules as a tree: kinds with their counts, and below each the rules that have it. Long lists are
// fetched in parts, as the view requests them. User interface thread only.
class ProblemsModel : public QAbstractItemModel {
    Q_OBJECT
public:
    using QAbstractItemModel::QAbstractItemModel;

    // A problem, by its kind and its index in the list of that kind.
    struct Place {
        workflow::FindingKind kind;
        std::size_t number;
    };

    // Null for no problems.
    void setProblems(workflow::ProblemListsPtr problems);
    void setShownKinds(const workflow::FindingKinds& kinds);
    const workflow::FindingKinds& shownKinds() const { return m_kinds; }

    // The number of problems of all shown kinds.
    std::size_t count() const;
    // Null for a kind.
    const workflow::KnownProblem* problemAt(const QModelIndex& index) const;
    const workflow::KnownProblem& problemAt(const Place& place) const;
    std::optional<Place> placeOf(const QModelIndex& index) const;
    // Invalid when it is so far down that fetching the list up to it would take long.
    QModelIndex indexOf(const Place& place);

    // The problem after or before a place, wrapping around at the ends. If the problem of that place has been
    // removed (`hasLeft`), the next one is the one that is there now. None when there are no problems.
    std::optional<Place> neighbour(const Place& place, bool hasLeft, bool forward) const;
    // The first or the last of all.
    std::optional<Place> end(bool atFront) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    const std::vector<workflow::KnownProblem>& list(workflow::FindingKind kind) const;
    std::optional<workflow::FindingKind> kindAt(const QModelIndex& index) const;
    void arrange();

    workflow::ProblemListsPtr m_problems = std::make_shared<const workflow::ProblemLists>();
    workflow::FindingKinds m_kinds = workflow::FindingKinds::usual();
    std::vector<workflow::FindingKind> m_rows; // the shown kinds that have problems
    std::array<std::size_t, workflow::findingKindCount>
        m_fetched{}; // by kind: how many problems the view has fetched
};

} // namespace quorvane::windows
