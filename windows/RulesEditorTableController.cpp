#include "windows/RulesEditorTableController.h"

#include "platform/Log.h"
#include "ui_RulesEditorTableController.h"
#include "windows/AsideController.h"
#include "windows/BackgroundThread.h"
#include "windows/ColumnsMenu.h"
#include "windows/ExchangeController.h"
#include "windows/HistoryWindow.h"
#include "windows/OneLineText.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/RowsRefresh.h"
#include "windows/RulesFileFollower.h"
#include "windows/RulesTableModel.h"
#include "windows/SelectionController.h"
#include "windows/SelectionState.h"
#include "windows/Shades.h"
#include "windows/SlowWork.h"
#include "windows/WindowLook.h"
#include "windows/WindowMemory.h"
#include "workflow/ApplicationServices.h"
#include "workflow/RuleCells.h"
#include "workflow/RulesDocument.h"
#include "workflow/RulesHistory.h"
#include "workflow/RunState.h"
#include "workflow/SortClicks.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QShortcut>
#include <QToolButton>

namespace quorvane::windows {

namespace {

constexpr int noColumn = -1; // no column shows what the rows are sorted by

// What takes long, as the end of the counts.
QString slowWork(workflow::DocumentWork work)
{
    if (work == workflow::DocumentWork::readingHistory)
        return RulesEditorTableController::tr(", reading the history\u2026");
    return work == workflow::DocumentWork::reading
        ? RulesEditorTableController::tr(", reading the file\u2026")
        : RulesEditorTableController::tr(", writing the file\u2026");
}

} // namespace

RulesEditorTableController::RulesEditorTableController(workflow::RulesDocument& document,
    workflow::ApplicationServices& application, workflow::RunState& run, desktop::Workspace& workspace,
    platform::Log& log)
    : m_document(document)
    , m_store(document.store())
    , m_application(application)
    , m_run(run)
    , m_workspace(workspace)
    , m_log(log)
    , m_commands(document, log)
    , m_keptDrafts(toQt(document.stateFolder()), m_store.locations().userRulesFile(), log)
    , m_ui(std::make_unique<Ui::RulesEditorTableController>())
    , m_model(new RulesTableModel(m_store, workspace, this))
    , m_rowsThread(std::make_unique<BackgroundThread>())
    , m_refresh(std::make_unique<RowsRefresh>(m_store, *m_rowsThread))
    , m_fileWork(std::make_unique<SlowWork>())
    , m_rulesHistory(std::make_unique<workflow::RulesHistory>(document))
    , m_histories{m_rulesHistory.get()}
    , m_exchange(std::make_unique<ExchangeController>(*this, *this, document, application, workspace, log))
    , m_follower(std::make_unique<RulesFileFollower>(document, application, run, log))
{
    m_ui->setupUi(this);
    m_log.write("-[RulesEditorTableController init]");
    setUpActions();
    setUpTable();
    setUpRefresh();
    setUpCommands();
    setUpExchange();
    setUpActionsOnMany();
    setUpParts();
    restoreWindowSize(*this);
    updateCounts();
    showFailure();
    setUpDocument();
    m_follower->start();
    awakeFromNib();
}

RulesEditorTableController::~RulesEditorTableController()
{
    m_parts.reset();
    delete m_historyWindow; // before the histories that it shows
    m_document.setObserver(nullptr);
    m_model->disconnect(this); // the table is destroyed later and may still commit the edit of a tag
}

void RulesEditorTableController::awakeFromNib()
{
    if (!std::exchange(m_initialize, false))
        return;
    setWindowTitle(
        tr("Quorvane Configuration - %1").arg(plainTitle(toQt(m_store.locations().userRulesFile()))));
    m_follower->checkFile();
    m_exchange->offerSuggestions();
    offerKeptRules();
}

bool RulesEditorTableController::showsSystemRules() const
{
    return m_model->showsSystemRules();
}

void RulesEditorTableController::setUpActions()
{
    // Moves the search field to the right end of the tool bar.
    auto* space = new QWidget(this);
    space->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_ui->toolBar->addWidget(space);
    m_ui->toolBar->addWidget(m_ui->searchLabel);
    m_ui->toolBar->addWidget(m_ui->searchField);
    m_ui->searchLabel->setBuddy(m_ui->searchField);
    constexpr int roomBesideText = 4;
    m_ui->searchField->setTextMargins(roomBesideText, 0, roomBesideText, 0);
    keepToOneLine(*m_ui->searchField);
    if (auto* clear = m_ui->searchField->findChild<QToolButton*>())
        clear->setAccessibleName(tr("Clear"));
    connect(m_ui->searchField, &QLineEdit::textChanged, this, &RulesEditorTableController::searchFieldAction);
    connect(m_ui->searchField, &QLineEdit::returnPressed, m_ui->rulesEditorTableView,
        qOverload<>(&QWidget::setFocus));
    auto* escape = new QShortcut(Qt::Key_Escape, m_ui->searchField, nullptr, nullptr, Qt::WidgetShortcut);
    connect(escape, &QShortcut::activated, this, &RulesEditorTableController::leaveSearchField);

    connect(m_ui->hideSystemToolbarItem, &QAction::triggered, this,
        &RulesEditorTableController::hideSystemAction);
    connect(m_ui->findMenuItem, &QAction::triggered, this, &RulesEditorTableController::focusSearchField);
    connect(m_ui->preferencesMenuItem, &QAction::triggered, this,
        [this] { m_application.showPreferencesWindow(); });
    connect(m_ui->userGuideMenuItem, &QAction::triggered, this, [this] { m_application.showHelp(); });
    connect(m_ui->quitMenuItem, &QAction::triggered, this, &QWidget::close);
    setUpSortMenu();
    statusBar()->addWidget(m_ui->countLabel);
    statusBar()->addWidget(m_ui->failureLabel, 1);
    setTextShade(*m_ui->failureLabel, shades::failureText);
}

void RulesEditorTableController::setUpSortMenu()
{
    auto* oneOf = new QActionGroup(this);
    const auto add = [this, oneOf](const QString& title, rules::SortKey key, int column) {
        QAction* item = oneOf->addAction(title);
        item->setCheckable(true);
        connect(item, &QAction::triggered, this, [this, key, column] { sortBy(key, column); });
    };
    for (int column = 0; column < workflow::ruleColumnCount; ++column) {
        const auto ruleColumn = static_cast<workflow::RuleColumn>(column);
        add(toQt(columnTitle(ruleColumn)), columnSortKey(ruleColumn), column);
    }
    add(tr("Date"), rules::SortKey::created, noColumn);
    m_ui->sortMenu->addActions(oneOf->actions());
}

void RulesEditorTableController::setUpTable()
{
    m_model->reload();
    auto* table = m_ui->rulesEditorTableView;
    table->setModel(m_model);
    table->setPathColumn(static_cast<int>(workflow::RuleColumn::path));
    restoreColumns(*table);
    auto* columns = new ColumnsMenu(*table, *m_ui->columnsMenu);
    columns->setParent(this);
    // Typing in the table continues in the search field.
    connect(table, &RulesTableView::textTyped, this, [this](const QString& text) {
        m_ui->searchField->setFocus(Qt::OtherFocusReason);
        m_ui->searchField->setText(text);
    });
    connect(table->horizontalHeader(), &QHeaderView::sectionClicked, this,
        &RulesEditorTableController::sortByColumn);
}

void RulesEditorTableController::setUpRefresh()
{
    connect(m_refresh.get(), &RowsRefresh::done, this, &RulesEditorTableController::showRows);
    connect(
        m_refresh.get(), &RowsRefresh::slownessDidChange, this, &RulesEditorTableController::updateCounts);
    connect(m_fileWork.get(), &SlowWork::slownessDidChange, this, &RulesEditorTableController::updateCounts);
}

void RulesEditorTableController::searchFieldAction()
{
    const std::string text = fromQt(m_ui->searchField->text());
    m_log.write("search field text changed: " + text);
    m_store.applyFilterWithString(text);
    m_newRule.reset(); // the user is now searching for something else
    reloadRows();
}

void RulesEditorTableController::hideSystemAction()
{
    m_log.write(std::string("-[RulesEditorTableController hideSystemAction:] show system rules: ")
        + (showsSystemRules() ? "YES" : "NO"));
    m_model->setShowsSystemRules(!showsSystemRules());
    m_ui->hideSystemToolbarItem->setText(
        showsSystemRules() ? tr("Hide System Rules") : tr("Show System Rules"));
    reloadRows();
}

void RulesEditorTableController::sortByColumn(int column)
{
    sortBy(columnSortKey(static_cast<workflow::RuleColumn>(column)), column);
}

// The menu item keeps its check mark when it is chosen again to reverse the order.
void RulesEditorTableController::sortBy(rules::SortKey key, int column)
{
    m_sortDescriptors = workflow::sortDescriptorsAfterClick(m_sortDescriptors, key);
    const Qt::SortOrder order
        = m_sortDescriptors.front().ascending ? Qt::AscendingOrder : Qt::DescendingOrder;
    m_ui->rulesEditorTableView->showOrder(column, order);
    m_ui->sortMenu->actions().at(column == noColumn ? workflow::ruleColumnCount : column)->setChecked(true);
    sortDescriptorsDidChange();
}

void RulesEditorTableController::sortDescriptorsDidChange()
{
    m_store.sortIndexUsingDescriptors(m_sortDescriptors);
    reloadTable();
}

void RulesEditorTableController::reloadData()
{
    reloadRows();
    m_exchange->presentRulesDidChange();
    Q_EMIT rulesDidChange();
}

// The same rules in other rows, which do not affect an open review.
void RulesEditorTableController::reloadRows()
{
    m_run.internalWrite = true;
    reloadTable();
    whenRowsAreShown([this] { showNewRule(); });
}

void RulesEditorTableController::reloadTable()
{
    if (m_refresh->start())
        showFailure();
    else
        showRows();
}

void RulesEditorTableController::showRows()
{
    m_rulesEditorContextualMenu->close(); // its row may belong to another rule now
    const SelectionState selection(*m_ui->rulesEditorTableView, *m_model);
    auto former = m_model->sharedRows();
    m_model->reload();
    freeInBackground(*m_rowsThread, std::move(former));
    selection.restore(*m_ui->rulesEditorTableView, *m_model);
    validateItems();
    updateCounts();
    showFailure();
    for (auto& work : std::exchange(m_whenRowsAreShown, {}))
        whenRowsAreShown(std::move(work)); // one of them may start another search
}

// At once, or when the rows that are being computed are shown.
void RulesEditorTableController::whenRowsAreShown(std::function<void()> work)
{
    if (m_refresh->isWorking())
        m_whenRowsAreShown.push_back(std::move(work));
    else
        work();
}

void RulesEditorTableController::updateCounts()
{
    if (m_refresh->isSlow())
        return m_ui->countLabel->setText(m_refresh->isSearch() ? tr("Searching\u2026") : tr("Sorting\u2026"));
    const auto shown = static_cast<std::size_t>(m_model->rowCount());
    const std::size_t hidden = m_model->hiddenSystemRules();
    const std::size_t leftOut = m_model->leftOutRules();
    const std::size_t stored = m_store.storedRules();
    const QLocale locale;
    QString counts = tr("%1 of %2 rules shown")
                         .arg(locale.toString(static_cast<qulonglong>(shown)),
                             locale.toString(static_cast<qulonglong>(stored)));
    if (hidden == 1)
        counts += tr(", 1 system rule hidden");
    else if (hidden > 1)
        counts += tr(", %1 system rules hidden").arg(locale.toString(static_cast<qulonglong>(hidden)));
    if (leftOut > 0)
        counts += tr(", %1 left out by Narrow").arg(locale.toString(static_cast<qulonglong>(leftOut)));
    if (m_fileWork->isSlow())
        counts += slowWork(m_document.work());
    m_ui->countLabel->setText(counts);
    m_ui->rulesEditorTableView->setEmptyText(stored == 0 ? tr("There are no rules yet.")
            : hidden > 0  ? tr("Only system rules match. \u201cShow System Rules\u201d shows them.")
            : leftOut > 0 ? tr("No rule matches what is chosen under Narrow.")
                          : tr("No rule matches."));
}

// Rules that could not be written are only in memory, and rules that could not be read are only in the file.
void RulesEditorTableController::showFailure()
{
    const auto& unread = m_store.unreadRules();
    QStringList failures{
        toQt(m_store.lastErrorMessage().value_or(unread ? unread->reason : "")), m_preferencesFailure};
    failures.removeAll(QString());
    m_ui->failureLabel->setText(failures.join(QStringLiteral("  \u2022  ")));
}

void RulesEditorTableController::showPreferencesFailure(const QString& failure)
{
    m_preferencesFailure = failure;
    showFailure();
}

void RulesEditorTableController::focusSearchField()
{
    activateWindow();
    m_ui->searchField->setFocus(Qt::ShortcutFocusReason);
    m_ui->searchField->selectAll();
}

void RulesEditorTableController::leaveSearchField()
{
    if (m_ui->searchField->text().isEmpty())
        m_ui->rulesEditorTableView->setFocus();
    else
        m_ui->searchField->clear();
}

void RulesEditorTableController::closeEvent(QCloseEvent* event)
{
    if (m_columnsFitted) { // otherwise it was never shown
        rememberWindowSize(*this);
        rememberDocks(*this);
        rememberColumns(*m_ui->rulesEditorTableView);
        // Widths not chosen by the user might not fit the rules of the next run.
        if (m_ui->rulesEditorTableView->areWidthsChosen())
            rememberColumnWidths(*m_ui->rulesEditorTableView);
        else
            forgetColumnWidths();
    }
    QMainWindow::closeEvent(event);
    m_log.write("-[RulesEditorTableController windowWillClose:] exiting");
    if (!m_run.openedWithOptions)
        m_application.terminate();
}

void RulesEditorTableController::showEvent(QShowEvent* event)
{
    QMainWindow::showEvent(event);
    if (std::exchange(m_columnsFitted, true))
        return;
    if (!restoreColumnWidths(*m_ui->rulesEditorTableView))
        m_ui->rulesEditorTableView->fitColumns();
}

} // namespace quorvane::windows
