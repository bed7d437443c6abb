#include "windows/CleanUpWindow.h"

#include "windows/CleanUpModel.h"
#include "windows/ProblemsFinder.h"
#include "windows/QtText.h"
#include "windows/RulesTable.h"
#include "windows/TallRows.h"
#include "windows/WindowLook.h"
#include "windows/WindowMemory.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesDocument.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <memory>
#include <utility>

namespace quorvane::windows {

namespace {

constexpr QSize usualWindowSize(820, 460);
constexpr int widthOfReason = 230;
constexpr int widthOfDoubt = 150;

} // namespace

CleanUpWindow::CleanUpWindow(RulesTable& table, workflow::RulesDocument& document, ProblemsFinder& finder,
    workflow::RulesPlace place, workflow::ChangingPlaces changing, QWidget* parent)
    : QDialog(parent)
    , m_table(table)
    , m_document(document)
    , m_finder(finder)
    , m_place(std::move(place))
    , m_changing(std::move(changing))
    , m_model(new CleanUpModel(this))
    , m_list(new QTreeView(this))
    , m_count(new QLabel(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Clean Up"));
    m_count->setObjectName(QStringLiteral("countLabel"));
    setUpControls();
    connect(m_model, &CleanUpModel::ticksDidChange, this, &CleanUpWindow::updateCount);
    connect(&m_finder, &ProblemsFinder::found, this, &CleanUpWindow::fill);
    if (!keepSize(*this, QStringLiteral("cleanUpWindow")))
        resize(usualWindowSize);
    updateCount();
    m_finder.start();
    fill(m_finder.problems());
}

void CleanUpWindow::setUpControls()
{
    auto* intro = new QLabel(tr("These rules have nothing to do. What is ticked goes, in one step that Undo "
                                "takes back; what might be wanted again is not ticked."),
        this);
    intro->setWordWrap(true);
    m_list->setAccessibleName(tr("Rules that can go"));
    m_list->setModel(m_model);
    m_list->setItemDelegate(new TallRows(m_list));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true); // avoids measuring every row of a long list
    m_list->setTextElideMode(Qt::ElideMiddle);
    m_list->setAllColumnsShowFocus(true);
    QHeaderView* header = m_list->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(CleanUpModel::rule, QHeaderView::Stretch);
    header->resizeSection(CleanUpModel::reason, widthOfReason);
    header->resizeSection(
        CleanUpModel::doubt, std::max(widthOfDoubt, header->sectionSizeHint(CleanUpModel::doubt)));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    const auto addTicking = [&](const QString& title, bool areTicked) {
        QPushButton* button = buttons->addButton(title, QDialogButtonBox::ResetRole);
        button->setAutoDefault(false);
        connect(
            button, &QPushButton::clicked, m_model, [this, areTicked] { m_model->setAllTicked(areTicked); });
    };
    addTicking(tr("Tick &All"), true);
    addTicking(tr("Tick &None"), false);
    m_button = buttons->addButton(tr("&Clean Up"), QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &CleanUpWindow::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_count);
    layout->addWidget(buttons);
}

void CleanUpWindow::fill(const workflow::ProblemListsPtr& problems)
{
    if (m_finder.isLooking())
        return; // these may be from other rules, or another place
    if (!problems)
        return m_count->setText(tr("There is not enough memory to find them."));
    auto candidates = std::make_shared<std::vector<workflow::DispensableRule>>();
    m_thread.run(
        [this, problems, candidates] { *candidates = cleanUpCandidates(*problems, m_changing, m_place); },
        [this, candidates] {
            doubtWhatMustStay(m_document.store(), *candidates);
            m_isFilled = true;
            m_model->setCandidates(std::move(*candidates));
            m_list->setCurrentIndex(m_model->index(0, CleanUpModel::rule));
            Q_EMIT wasFilled();
        });
}

void CleanUpWindow::updateCount()
{
    const std::size_t ticked = m_model->tickedCount();
    m_button->setEnabled(ticked > 0);
    const int rules = m_model->rowCount();
    m_count->setText(!m_isFilled ? tr("Looking for rules that can go...")
            : rules == 0         ? tr("There is nothing to clean up.")
                                 : tr("%1 of %2 ticked.").arg(inWords(ticked), QLocale().toString(rules)));
}

void CleanUpWindow::accept()
{
    const workflow::PlannedChange planned
        = cleaningUp(m_document.store(), m_model->ticked(), m_document.settings().lineEnds());
    QDialog::accept();
    m_table.perform(planned,
        {.action = workflow::actionName("Clean Up", planned.change.removed.size()), .refusesCuts = true});
}

} // namespace quorvane::windows
