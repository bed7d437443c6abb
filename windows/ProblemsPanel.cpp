#include "windows/ProblemsPanel.h"

#include "windows/ProblemsFinder.h"
#include "windows/QtText.h"
#include "windows/WindowMemory.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace quorvane::windows {

namespace {

constexpr int margin = 6;
constexpr QSize usualPanelSize(240, 240);

} // namespace

ProblemsPanel::ProblemsPanel(ProblemsFinder& finder, QWidget* parent)
    : QWidget(parent)
    , m_finder(finder)
    , m_model(new ProblemsModel(this))
    , m_tree(new QTreeView(this))
    , m_kindsButton(new QToolButton(this))
    , m_kindsMenu(new QMenu(this))
    , m_status(new QLabel(this))
{
    m_tree->setAccessibleName(tr("Problems"));
    m_tree->setModel(m_model);
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true); // avoids measuring every row of a long list
    m_tree->setTextElideMode(Qt::ElideMiddle);
    m_tree->setFrameShape(QFrame::NoFrame);
    connect(m_tree, &QTreeView::clicked, this, &ProblemsPanel::choose);
    connect(m_tree, &QTreeView::activated, this, &ProblemsPanel::choose);
    setUpKinds();
    auto* again = new QToolButton(this);
    again->setText(tr("Look &Again"));
    again->setToolTip(tr("Look at all programs and paths again"));
    again->setFocusPolicy(Qt::StrongFocus);
    connect(again, &QToolButton::clicked, &m_finder, &ProblemsFinder::lookAgain);
    connect(again, &QToolButton::clicked, this, &ProblemsPanel::updateStatus);
    m_status->setWordWrap(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_kindsButton);
    buttons->addWidget(again);
    buttons->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addLayout(buttons);
    layout->addWidget(m_tree, 1);
    layout->addWidget(m_status);

    connect(&m_finder, &ProblemsFinder::found, this, &ProblemsPanel::showFound);
    updateStatus();
}

QSize ProblemsPanel::sizeHint() const
{
    return usualPanelSize;
}

void ProblemsPanel::setUpKinds()
{
    m_kindsButton->setText(tr("&Kinds"));
    m_kindsButton->setToolTip(tr("Which kinds of problems are shown"));
    m_kindsButton->setFocusPolicy(Qt::StrongFocus);
    m_kindsButton->setPopupMode(QToolButton::InstantPopup);
    m_kindsButton->setMenu(m_kindsMenu);
    if (const auto hidden = rememberedHiddenKinds()) {
        workflow::FindingKinds kinds = workflow::FindingKinds::all();
        for (const QString& name : *hidden) {
            if (const auto kind = workflow::findingKindNamed(fromQt(name)))
                kinds.remove(*kind);
        }
        showKinds(kinds);
    }
    for (const workflow::FindingKind kind : workflow::allFindingKinds) {
        QAction* item = m_kindsMenu->addAction(toQt(findingTitle(kind)));
        item->setCheckable(true);
        item->setChecked(m_model->shownKinds().contains(kind));
        connect(item, &QAction::toggled, this, [this, kind](bool isShown) { showKind(kind, isShown); });
    }
}

void ProblemsPanel::showKind(workflow::FindingKind kind, bool isShown)
{
    workflow::FindingKinds kinds = m_model->shownKinds();
    if (isShown)
        kinds.add(kind);
    else
        kinds.remove(kind);
    showKinds(kinds);
    QStringList hidden;
    for (const workflow::FindingKind each : workflow::allFindingKinds) {
        if (!kinds.contains(each))
            hidden.append(toQt(findingName(each)));
    }
    rememberHiddenKinds(hidden);
}

void ProblemsPanel::showKinds(const workflow::FindingKinds& kinds)
{
    m_model->setShownKinds(kinds);
    expandAll();
    followChosen();
    m_finder.setFindsOverlaps(*this, kinds.contains(workflow::FindingKind::overlap));
    updateStatus();
}

void ProblemsPanel::showEvent(QShowEvent* /*event*/)
{
    m_finder.start();
    updateStatus();
}

void ProblemsPanel::expandAll()
{
    for (int row = 0; row < m_model->rowCount(); ++row)
        m_tree->expand(m_model->index(row, 0));
}

void ProblemsPanel::showFound(const workflow::ProblemListsPtr& problems)
{
    m_model->setProblems(problems);
    expandAll();
    followChosen();
    updateStatus();
    if (const auto forward = std::exchange(m_stepWanted, std::nullopt))
        step(*forward);
}

void ProblemsPanel::updateStatus()
{
    const std::size_t count = m_model->count();
    const QString problems = count == 0 ? tr("No problems.")
        : count == 1                    ? tr("1 problem.")
                                        : tr("%1 problems.").arg(inWords(static_cast<std::uint64_t>(count)));
    const bool hasFailed = !m_finder.isLooking() && !m_finder.problems();
    m_status->setText(m_finder.isLooking() ? tr("Looking for problems...")
            : hasFailed                    ? tr("The problems are not known.")
                                           : problems);
}

void ProblemsPanel::choose(const QModelIndex& index)
{
    if (const auto place = m_model->placeOf(index))
        choosePlace(*place);
}

void ProblemsPanel::choosePlace(const ProblemsModel::Place& place)
{
    m_place = place;
    m_hasLeft = false;
    m_chosen = m_model->problemAt(place).rule;
    if (const QModelIndex index = m_model->indexOf(place); index.isValid())
        m_tree->setCurrentIndex(index);
    Q_EMIT ruleChosen(*m_chosen);
    if (place.kind == workflow::FindingKind::joined)
        Q_EMIT joinedLineChosen();
}

// Finds the chosen problem in the new lists.
void ProblemsPanel::followChosen()
{
    if (!m_place)
        return;
    const workflow::ProblemListsPtr& problems = m_finder.problems();
    if (!problems)
        return m_place.reset();
    const auto& list = problems->of(m_place->kind);
    const auto isChosen = [this](const workflow::KnownProblem& problem) { return problem.rule == *m_chosen; };
    const bool isThere = m_place->number < list.size() && isChosen(list[m_place->number]);
    const auto found = isThere ? list.begin() + static_cast<std::ptrdiff_t>(m_place->number)
                               : std::find_if(list.begin(), list.end(), isChosen);
    m_hasLeft = found == list.end();
    if (m_hasLeft)
        return;
    m_place->number = static_cast<std::size_t>(found - list.begin());
    m_tree->setCurrentIndex(m_model->indexOf(*m_place));
}

void ProblemsPanel::showNext()
{
    step(true);
}

void ProblemsPanel::showPrevious()
{
    step(false);
}

void ProblemsPanel::step(bool forward)
{
    if (!m_finder.problems()) {
        m_stepWanted = forward;
        m_finder.start();
        return updateStatus();
    }
    const auto place = m_place ? m_model->neighbour(*m_place, m_hasLeft, forward) : m_model->end(forward);
    if (place)
        choosePlace(*place);
}

} // namespace quorvane::windows
