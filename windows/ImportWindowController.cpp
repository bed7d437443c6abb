#include "windows/ImportWindowController.h"

#include "platform/Log.h"
#include "rules/ListedRows.h"
#include "ui_ImportWindowController.h"
#include "windows/ImportProgress.h"
#include "windows/ImportTableModel.h"
#include "windows/PlainText.h"
#include "windows/QtText.h"
#include "windows/SelectionState.h"
#include "workflow/ImportCells.h"
#include "workflow/ImportDelegate.h"
#include "workflow/RulesDocument.h"
#include "workflow/SortClicks.h"

#include <QAction>
#include <QHeaderView>
#include <QLocale>
#include <QMenu>
#include <QThreadPool>

#include <new>
#include <optional>
#include <utility>

namespace quorvane::windows {

ImportWindowController::ImportWindowController(
    workflow::RulesDocument& document, desktop::Workspace& workspace, platform::Log& log, QWidget* parent)
    : QDialog(parent, Qt::Window)
    , m_document(document)
    , m_present(document.store())
    , m_log(log)
    , m_ui(std::make_unique<Ui::ImportWindowController>())
    , m_model(new ImportTableModel(m_present, m_stateDict, workspace, this))
{
    m_ui->setupUi(this);
    setUpTable();
    setUpMenu();
    connect(&m_counting, &QTimer::timeout, this, &ImportWindowController::examine);
    connect(m_ui->foresightBar, &ForesightBar::filterChanged, this, &ImportWindowController::reloadTable);
    connect(m_ui->importButton, &QPushButton::clicked, this, &ImportWindowController::importAction);
    connect(m_ui->takeApartButton, &QPushButton::clicked, this, &ImportWindowController::takeApart);
    m_ui->takeApartButton->hide();
    connect(m_ui->cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    setPath({});
    updateCounts();
    m_ui->importTableView->setFocus();
}

ImportWindowController::~ImportWindowController()
{
    m_findingFailing.request_stop();
    freeRules();
}

// On a thread that outlives the window: to free 100,000 rules takes 30 to 100 ms.
void ImportWindowController::freeRules()
{
    if (m_ruleManager == nullptr)
        return;
    m_model->reload(*m_ruleManager, std::make_shared<rules::RuleRows>());
    std::shared_ptr<rules::RuleManager> rules = std::move(m_ruleManager);
    QThreadPool::globalInstance()->start([rules = std::move(rules)]() mutable { rules.reset(); });
}

void ImportWindowController::setUpTable()
{
    constexpr int iconPixels = 18;
    auto* table = m_ui->importTableView;
    table->setIconSize(QSize(iconPixels, iconPixels));
    table->setModel(m_model);
    QHeaderView* header = table->horizontalHeader();
    table->setPathColumn(static_cast<int>(workflow::ImportColumn::path));
    header->setSectionResizeMode(static_cast<int>(workflow::ImportColumn::tick), QHeaderView::Fixed);
    connect(header, &QHeaderView::sectionClicked, this, [this](int column) {
        if (static_cast<workflow::ImportColumn>(column) == workflow::ImportColumn::tick)
            toggleAllTicks();
        else
            sortByColumn(column);
    });
    connect(m_model, &ImportTableModel::checkBoxClicked, this, &ImportWindowController::checkBoxValueChanged);
}

// Keyboard equivalents of the mouse actions in the table.
void ImportWindowController::setUpMenu()
{
    auto* table = m_ui->importTableView;
    auto* menu = new QMenu(table);
    const auto addTickAction = [&](const QString& text, const QKeySequence& keys, auto slot) {
        QAction* action = menu->addAction(text);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, slot);
        table->addAction(action);
    };
    addTickAction(tr("&Tick or Untick"), Qt::Key_Space, &ImportWindowController::toggleSelectedTicks);
    addTickAction(
        tr("Tick or Untick &All"), Qt::CTRL | Qt::Key_Space, &ImportWindowController::toggleAllTicks);
    QMenu* sortMenu = menu->addMenu(tr("S&ort By"));
    for (int column = 0; column < workflow::importColumnCount; ++column) {
        if (!importColumnSortKey(static_cast<workflow::ImportColumn>(column)))
            continue;
        QAction* action
            = sortMenu->addAction(toQt(importColumnTitle(static_cast<workflow::ImportColumn>(column))));
        connect(action, &QAction::triggered, this, [this, column] { sortByColumn(column); });
    }
    table->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(table, &QWidget::customContextMenuRequested, menu,
        [table, menu](const QPoint& place) { menu->popup(table->viewport()->mapToGlobal(place)); });
}

void ImportWindowController::setPath(std::string path)
{
    m_path = std::move(path);
    setWindowTitle(
        m_path.empty() ? tr("Import Rules") : tr("Import Rules - %1").arg(plainTitle(toQt(m_path))));
}

void ImportWindowController::setPlace(const workflow::RulesPlace& place)
{
    m_place = place.withoutHomes();
    m_model->setPlace(m_place);
}

void ImportWindowController::setText(std::string text)
{
    m_text = std::move(text);
    setPath(fromQt(tr("Pasted Text")));
}

void ImportWindowController::awakeFromNib()
{
    if (m_initialize || m_path.empty())
        return;
    m_log.write("path set to " + m_path);
    if (auto reading = this->reading(); reading.isLong())
        readInBackground(std::move(reading));
    else
        list(reading.read());
    m_initialize = true;
}

workflow::ReviewReading ImportWindowController::reading() const
{
    return {m_path, m_text, m_listing, m_present.locations(), m_log};
}

void ImportWindowController::readInBackground(workflow::ReviewReading reading)
{
    setReading(Reading::underWay);
    const auto read = std::make_shared<std::optional<workflow::ReviewedRules>>();
    m_thread.run(
        [read, reading = std::move(reading)] {
            try {
                *read = reading.read();
            } catch (const std::bad_alloc&) {
                read->reset();
            }
        },
        [this, read] { takeRead(std::move(*read)); });
}

void ImportWindowController::takeRead(std::optional<workflow::ReviewedRules> read)
{
    setReading(read ? Reading::done : Reading::failed);
    if (read)
        list(std::move(*read));
}

// As long as the rules are not read, none can be imported.
void ImportWindowController::setReading(Reading reading)
{
    m_reading = reading;
    m_ui->importButton->setEnabled(reading == Reading::done);
    updateCounts();
}

void ImportWindowController::reloadData()
{
    takeRead(reading().read());
}

void ImportWindowController::list(workflow::ReviewedRules read)
{
    m_stateDict = {};
    for (const std::int64_t sequence : read.cut)
        m_stateDict.setTicked(sequence, false);
    m_sortDescriptors.clear();
    m_coming.reset();
    m_foresight.reset();
    m_failing.reset();
    m_ui->foresightBar->showAll();
    m_ui->importTableView->showOrder(-1, Qt::AscendingOrder);
    m_joinedLines = read.joinedLines;
    m_joinedRules = std::move(read.joinedRules);
    m_model->reload(*read.rules);
    m_ruleManager = std::move(read.rules); // only now, when no row of the old one is shown any more
    numberOfRowsInTableView();
    m_ui->importTableView->fitColumns();
    m_ui->takeApartButton->setVisible(m_listing == Listing::file && m_joinedLines > 0);
    ticksDidChange();
    startCounting();
    findFailing();
}

void ImportWindowController::takeApart()
{
    if (m_isImporting)
        return;
    m_listing = Listing::allApart;
    reloadData();
}

void ImportWindowController::startCounting()
{
    m_coming = std::make_unique<workflow::ImportForesight>(
        m_present, *m_ruleManager, m_joinedRules.get(), m_document.settings().lineEnds());
    m_counting.start();
}

void ImportWindowController::examine()
{
    constexpr std::size_t rulesAtATime = 2000; // a few milliseconds
    if (m_coming->examine(rulesAtATime))
        return;
    m_counting.stop();
    m_foresight = std::move(m_coming);
    foresightDidChange();
}

// On another thread, since it reads program files.
void ImportWindowController::findFailing()
{
    m_findingFailing.request_stop();
    m_findingFailing = {};
    auto failing = std::make_shared<workflow::RuleSequences>();
    m_thread.run([failing, rows = m_ruleManager->rows(), place = m_place,
                     stop = m_findingFailing.get_token()] { *failing = failingRules(*rows, place, stop); },
        [this, failing, stop = m_findingFailing.get_token()] {
            if (stop.stop_requested())
                return;
            m_failing = failing;
            foresightDidChange();
        });
}

void ImportWindowController::foresightDidChange()
{
    if (m_foresight != nullptr)
        m_foresight->setFailing(m_failing);
    for (std::size_t number = 0; number < workflow::foresightKinds; ++number) {
        const auto kind = static_cast<workflow::Foresight>(number);
        const bool isKnown
            = m_foresight != nullptr && (kind != workflow::Foresight::failing || m_failing != nullptr);
        m_ui->foresightBar->setCount(kind, isKnown ? std::optional(m_foresight->count(kind)) : std::nullopt);
    }
    if (m_ui->foresightBar->filter())
        reloadTable();
    updateCounts();
    if (m_foresight != nullptr && m_failing != nullptr)
        Q_EMIT wasCounted();
}

void ImportWindowController::presentRulesDidChange()
{
    if (m_ruleManager == nullptr || m_isImporting)
        return;
    reloadTable();
    startCounting();
}

void ImportWindowController::reloadTable()
{
    if (m_ruleManager == nullptr)
        return;
    const SelectionState selection(*m_ui->importTableView, *m_model);
    m_model->reload(*m_ruleManager, shownRows());
    selection.restore(*m_ui->importTableView, *m_model);
    numberOfRowsInTableView();
    updateCounts();
}

// All rules in order, or those of the chosen kind.
std::shared_ptr<const rules::RuleRows> ImportWindowController::shownRows() const
{
    const auto rows = m_ruleManager->rows();
    const auto filter = m_ui->foresightBar->filter();
    if (!filter || m_foresight == nullptr)
        return rows;
    std::vector<rules::RuleRef> shown;
    for (std::size_t row = 0; row < rows->count(false); ++row) {
        if (m_foresight->is(rows->at(row, false), *filter))
            shown.push_back(rows->at(row, false));
    }
    return listedRows(shown);
}

std::size_t ImportWindowController::numberOfRowsInTableView() const
{
    const std::size_t rules = m_ruleManager == nullptr ? 0 : m_ruleManager->totalRules(false);
    m_log.write("total rules: " + std::to_string(rules) + " for path " + m_path);
    return rules;
}

void ImportWindowController::sortByColumn(int column)
{
    const auto key = importColumnSortKey(static_cast<workflow::ImportColumn>(column));
    if (!key || m_ruleManager == nullptr)
        return;
    m_sortDescriptors = workflow::sortDescriptorsAfterClick(m_sortDescriptors, *key);
    m_ui->importTableView->showOrder(
        column, m_sortDescriptors.front().ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
    m_ruleManager->sortIndexUsingDescriptors(m_sortDescriptors);
    reloadTable();
}

void ImportWindowController::checkBoxValueChanged(qint64 tag, bool isOn)
{
    m_stateDict.setTicked(tag, isOn);
    ticksDidChange();
}

void ImportWindowController::toggleAllTicks()
{
    const bool tick = m_model->commonTick() != Qt::Checked;
    if (m_ui->foresightBar->filter()) {
        for (int row = 0; row < m_model->rowCount(); ++row)
            m_stateDict.setTicked(workflow::sequenceOf(m_model->ruleAt(row)), tick);
    } else {
        m_stateDict.setAllTicked(tick);
    }
    ticksDidChange();
}

void ImportWindowController::toggleSelectedTicks()
{
    const QItemSelection selection = m_ui->importTableView->selectionModel()->selection();
    const auto anyRow = [&selection](auto question) {
        for (const QItemSelectionRange& range : selection) {
            for (int row = range.top(); row <= range.bottom(); ++row) {
                if (question(row))
                    return true;
            }
        }
        return false;
    };
    const bool tick = anyRow(
        [this](int row) { return !m_stateDict.isTicked(workflow::sequenceOf(m_model->ruleAt(row))); });
    anyRow([this, tick](int row) {
        m_stateDict.setTicked(workflow::sequenceOf(m_model->ruleAt(row)), tick);
        return false;
    });
    ticksDidChange();
}

void ImportWindowController::ticksDidChange()
{
    m_model->ticksDidChange();
    updateCounts();
}

void ImportWindowController::updateCounts()
{
    const std::size_t rules = m_ruleManager == nullptr ? 0 : m_ruleManager->totalRules(false);
    const std::size_t ticked = m_stateDict.countOfTicked(rules);
    const bool isFiltered = m_ui->foresightBar->filter().has_value();
    QString counts = tr("%1 of %2 rules ticked").arg(inWords(ticked), inWords(rules));
    if (const std::size_t shown = m_model->countOfTicked(); isFiltered && shown < ticked)
        counts += tr(" (%1 of them not shown, and imported all the same)").arg(inWords(ticked - shown));
    const bool isKnown = m_foresight != nullptr && !m_counting.isActive();
    if (isKnown && m_foresight->count(workflow::Foresight::present) > 0)
        counts += tr(", %1 already present (in italics)")
                      .arg(inWords(m_foresight->count(workflow::Foresight::present)));
    if (isKnown && m_foresight->countOfCut() > 0)
        counts += tr(", %1 with letters beyond ASCII, whose lines the rules file cuts")
                      .arg(inWords(m_foresight->countOfCut()));
    if (m_listing == Listing::file && m_joinedLines > 0)
        counts += m_joinedLines == 1
            ? tr("\n1 line of the file holds several rules, of which the first alone counts.")
            : tr("\n%1 lines of the file hold several rules each, of which the first alone counts.")
                  .arg(inWords(m_joinedLines));
    else if (m_listing != Listing::file)
        counts += tr("\nRules that have lost text are not ticked.");
    const auto unread = m_ruleManager == nullptr ? std::nullopt : m_ruleManager->unreadRules();
    const QString reason = unread ? toQt(unread->reason) : QString();
    m_ui->foresightBar->setTotal(rules);
    m_ui->importTableView->setEmptyText(unread ? reason
            : m_reading == Reading::underWay   ? tr("Reading the rules\u2026")
            : m_reading == Reading::failed     ? tr("There is not enough memory to read this file.")
            : isFiltered                       ? tr("No rule is of this kind.")
                                               : tr("This file holds no rules."));
    if (rules > 0 && unread)
        counts += QLatin1Char('\n') + reason;
    m_ui->countLabel->setText(withBreakPoints(counts));
}

void ImportWindowController::importAction()
{
    if (m_reading != Reading::done || std::exchange(m_isImporting, true))
        return;
    importTickedRules();
    m_isImporting = false;
    accept();
}

void ImportWindowController::importTickedRules()
{
    if (m_delegate == nullptr)
        return;
    const std::size_t rules = m_ruleManager == nullptr ? 0 : m_ruleManager->totalRules(false);
    ImportProgress progress(this, static_cast<int>(rules));
    for (std::size_t row = 0; row < rules; ++row) {
        progress.setImported(static_cast<int>(row));
        const rules::RuleRef& rule = m_ruleManager->ruleAtIndex(row, false);
        if (m_stateDict.isTicked(workflow::sequenceOf(rule)))
            m_delegate->importRule(rule);
    }
    m_hasFailed = !m_delegate->didFinishImportingRules();
}

void ImportWindowController::done(int result)
{
    if (m_isImporting)
        return;
    QDialog::done(result);
    windowWillClose();
}

void ImportWindowController::windowWillClose()
{
    m_log.write("-[ImportWindowController windowWillClose:] closing");
    if (!m_hasFailed)
        m_document.discardSuggestions();
}

void ImportWindowController::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    awakeFromNib();
}

} // namespace quorvane::windows
