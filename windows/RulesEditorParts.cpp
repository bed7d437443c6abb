#include "windows/RulesEditorTableController.h"

#include "platform/Account.h"
#include "ui_RulesEditorTableController.h"
#include "windows/AsideController.h"
#include "windows/CleanUpWindow.h"
#include "windows/ElidedLabel.h"
#include "windows/ExchangeController.h"
#include "windows/LikeSelection.h"
#include "windows/PlaceMenu.h"
#include "windows/ProblemsFinder.h"
#include "windows/ProblemsPanel.h"
#include "windows/RuleFixes.h"
#include "windows/RuleStrip.h"
#include "windows/RulesTableModel.h"
#include "windows/SelectionController.h"
#include "windows/TableNarrowing.h"
#include "windows/WindowMemory.h"

#include <QDockWidget>
#include <QStatusBar>

// Creates the parts around the main window's table and connects them.

namespace quorvane::windows {

namespace {

constexpr int mostOfPlace = 50; // letters

// A dock that cannot float; its title is also that of its menu item.
QDockWidget* makeDock(const char* name, const QString& title, QWidget* content, QMainWindow& window)
{
    auto* dock = new QDockWidget(QString(title).remove(QLatin1Char('&')), &window);
    dock->setObjectName(QLatin1String(name)); // identifies it in the saved state
    dock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    dock->setWidget(content);
    dock->toggleViewAction()->setText(title);
    return dock;
}

} // namespace

void RulesEditorTableController::setUpParts()
{
    m_parts = std::make_unique<QObject>();
    auto* fixes = new RuleFixes(*this, m_document, *m_selection);
    fixes->setParent(m_parts.get());

    auto* strip = new RuleStrip(*this, m_document, *fixes, m_workspace, this);
    strip->setActionsOnMany({m_ui->deleteEditMenuItem, m_ui->exportSelectedRulesMenuItem});
    connect(this, &RulesEditorTableController::selectionDidChange, strip, &RuleStrip::selectionDidChange);
    connect(this, &RulesEditorTableController::rulesDidChange, strip, &RuleStrip::selectionDidChange);
    connect(strip, &RuleStrip::editRequested, this, [this](const rules::RuleRef& rule) { edit(rule); });
    QDockWidget* words = makeDock("ruleInWords", tr("Rule in &Words"), strip, *this);
    words->setFeatures(QDockWidget::DockWidgetClosable);
    words->setTitleBarWidget(new QWidget(words)); // no title bar: its contents speak for themselves
    addDockWidget(Qt::BottomDockWidgetArea, words);

    auto* finder = new ProblemsFinder(m_store);
    finder->setParent(m_parts.get());
    connect(this, &RulesEditorTableController::rulesDidChange, finder, &ProblemsFinder::rulesDidChange);
    connect(this, &RulesEditorTableController::fileDidChange, finder, &ProblemsFinder::rulesDidChange);
    auto* problems = new ProblemsPanel(*finder, this);
    connect(problems, &ProblemsPanel::ruleChosen, fixes, &RuleFixes::show);
    connect(problems, &ProblemsPanel::joinedLineChosen, m_exchange.get(),
        &ExchangeController::lookForJoinedLines); // which offers to review them
    connect(m_ui->nextProblemMenuItem, &QAction::triggered, problems, &ProblemsPanel::showNext);
    connect(m_ui->previousProblemMenuItem, &QAction::triggered, problems, &ProblemsPanel::showPrevious);
    QDockWidget* list = makeDock("problems", tr("&Problems"), problems, *this);
    addDockWidget(Qt::RightDockWidgetArea, list);
    list->hide();

    m_places = new PlaceMenu(*m_ui->placeMenu, *this, *this);
    m_places->setParent(m_parts.get());
    auto* placeLabel = new ElidedLabel(this);
    placeLabel->setObjectName(QStringLiteral("placeLabel"));
    placeLabel->setElideMode(Qt::ElideMiddle);
    placeLabel->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    placeLabel->setMaximumWidth(mostOfPlace * fontMetrics().averageCharWidth()); // leaves room for the counts
    placeLabel->hide();
    statusBar()->addPermanentWidget(placeLabel);
    connect(m_places, &PlaceMenu::placeChosen, this,
        [=, this](const workflow::RulesPlace& place, const QString& name) {
            placeLabel->setText(tr("Rules are for: %1").arg(name));
            placeLabel->setVisible(!name.isEmpty());
            m_model->setPlace(place);
            reloadTable();
            fixes->setPlace(place);
            m_selection->setPlace(place);
            m_aside->setPlace(place);
            m_exchange->setPlace(place);
            strip->setPlace(place);
            finder->setPlace(place);
        });

    connect(m_ui->cleanUpMenuItem, &QAction::triggered, this, [this, finder] {
        const workflow::ChangingPlaces changing = m_places->isThisMachine()
            ? workflow::ChangingPlaces{platform::mountsOfThisMachine(), platform::homeDirectory()}
            : workflow::ChangingPlaces();
        auto* window = new CleanUpWindow(*this, m_document, *finder, m_places->place(), changing, this);
        window->open();
    });
    (new LikeSelection(*this, *finder, *m_ui->selectByMenu))->setParent(m_parts.get());
    setUpNarrowing(*finder);

    m_ui->viewMenu->insertActions(
        m_ui->nextProblemMenuItem, {words->toggleViewAction(), list->toggleViewAction()});
    restoreDocks(*this);
}

void RulesEditorTableController::setUpNarrowing(ProblemsFinder& finder)
{
    // The user is now looking for something else. Connected before what shows other rows, perhaps at once.
    connect(m_ui->narrowBar, &NarrowBar::criteriaChanged, this, [this] { m_newRule.reset(); });
    auto* narrowing = new TableNarrowing(*m_ui->narrowBar, m_store, finder);
    narrowing->setParent(m_parts.get());
    connect(this, &RulesEditorTableController::rulesDidChange, narrowing, &TableNarrowing::rulesDidChange);
    connect(narrowing, &TableNarrowing::narrowed, this, [this](const auto& narrowed) {
        m_model->setNarrowing(narrowed);
        reloadRows();
    });
    connect(m_ui->narrowMenuItem, &QAction::toggled, this, [this, narrowing](bool isShown) {
        narrowing->setShown(isShown);
        isShown ? m_ui->narrowBar->setFocus() : m_ui->rulesEditorTableView->setFocus();
    });
    connect(
        m_ui->narrowBar, &NarrowBar::wasLeft, m_ui->rulesEditorTableView, qOverload<>(&QWidget::setFocus));
}

void RulesEditorTableController::useVolume(const std::string& folder)
{
    m_places->useVolume(folder);
}

} // namespace quorvane::windows
