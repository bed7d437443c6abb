#include "windows/RulesEditorTableController.h"

#include "ui_RulesEditorTableController.h"
#include "windows/ExchangeController.h"
#include "windows/HistoryWindow.h"
#include "windows/QtText.h"
#include "windows/RulesTableModel.h"
#include "windows/SettingsWindow.h"
#include "windows/SlowWork.h"
#include "windows/WindowLook.h"
#include "workflow/DocumentTexts.h"
#include "workflow/RulesDocument.h"

#include <QLocale>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

// The main window's handling of the document: undo, redo, and reports about the file.

namespace quorvane::windows {

namespace {

// The history is opened well after the window has been painted.
constexpr std::chrono::seconds untilVersionIsKept{2};

// Subjects of notices.
constexpr QLatin1String writeSubject("write");
constexpr QLatin1String aheadSubject("ahead");
constexpr QLatin1String cutSubject("cut");

} // namespace

void RulesEditorTableController::setUpDocument()
{
    connect(m_ui->undoMenuItem, &QAction::triggered, this, &RulesEditorTableController::undo);
    connect(m_ui->redoMenuItem, &QAction::triggered, this, &RulesEditorTableController::redo);
    connect(m_ui->historyMenuItem, &QAction::triggered, this, &RulesEditorTableController::showHistory);
    connect(m_ui->settingsMenuItem, &QAction::triggered, this, &RulesEditorTableController::showSettings);
    connect(m_exchange.get(), &ExchangeController::joinedLinesFound, this,
        &RulesEditorTableController::reportJoinedLines);
    connect(m_ui->editMenu, &QMenu::aboutToShow, this, &RulesEditorTableController::nameUndoAndRedo);
    // The shortcuts must work even if the menu has disabled the items.
    connect(m_ui->editMenu, &QMenu::aboutToHide, this, [this] {
        m_ui->undoMenuItem->setEnabled(true);
        m_ui->redoMenuItem->setEnabled(true);
    });
    m_document.setObserver(this);
    m_document.recover();
    QTimer::singleShot(untilVersionIsKept, this, [this] {
        m_document.keepPresentVersion();
        m_exchange->lookForJoinedLines();
    });
}

void RulesEditorTableController::nameUndoAndRedo()
{
    const auto name = [](QAction* item, const QString& verb, const std::optional<std::string>& action) {
        item->setText(action ? verb + QLatin1Char(' ') + toQt(*action) : verb);
        item->setEnabled(action.has_value());
    };
    name(m_ui->undoMenuItem, tr("&Undo"), m_document.undoName());
    name(m_ui->redoMenuItem, tr("&Redo"), m_document.redoName());
}

void RulesEditorTableController::undo()
{
    if (m_document.undo())
        reloadData();
    else
        m_ui->notices->add({.text = tr("There is nothing to undo."), .subject = QStringLiteral("undo")});
}

void RulesEditorTableController::redo()
{
    if (m_document.redo())
        reloadData();
    else
        m_ui->notices->add({.text = tr("There is nothing to redo."), .subject = QStringLiteral("undo")});
}

void RulesEditorTableController::addHistory(workflow::FileHistory& history)
{
    m_histories.push_back(&history);
}

void RulesEditorTableController::showHistory()
{
    if (m_historyWindow.isNull()) {
        m_historyWindow = new HistoryWindow(m_histories, this);
        connect(m_historyWindow, &HistoryWindow::wasRestored, this,
            qOverload<>(&RulesEditorTableController::reloadData));
        connect(m_historyWindow, &HistoryWindow::undoRequested, this, &RulesEditorTableController::undo);
    }
    bringToFront(*m_historyWindow);
}

void RulesEditorTableController::showSettings()
{
    if (m_settingsWindow.isNull()) {
        m_settingsWindow = new SettingsWindow(workflow::defaultSettingsFile(), this);
        connect(
            m_settingsWindow, &SettingsWindow::saved, this, &RulesEditorTableController::settingsWereSaved);
    }
    bringToFront(*m_settingsWindow);
}

void RulesEditorTableController::settingsWereSaved(const workflow::ProgramSettings& settings)
{
    m_document.setSettings(settings);
    if (settings.wholeLines)
        m_ui->notices->remove(cutSubject);
}

void RulesEditorTableController::showSettingsProblem(const QString& problem)
{
    m_ui->notices->add({.text = problem, .buttons = {{tr("Settings..."), [this] { showSettings(); }}}});
}

void RulesEditorTableController::reportJoinedLines(qulonglong lines)
{
    m_ui->notices->add({.text = lines == 1
            ? tr("1 line of the rules file holds several rules, of which the first alone counts.")
            : tr("%1 lines of the rules file hold several rules each, of which the first alone counts.")
                  .arg(QLocale().toString(lines)),
        .buttons = {{tr("Review"), [this] { m_exchange->reviewJoinedLines(); }}},
        .subject = QStringLiteral("joined")});
}

void RulesEditorTableController::showHistoryFrom(std::int64_t version)
{
    showHistory();
    m_historyWindow->showVersionFrom(version);
}

void RulesEditorTableController::rulesWereMerged(const rules::ChangeSet& /*change*/)
{
    reloadData();
}

void RulesEditorTableController::rulesWereReloaded()
{
    m_ui->notices->remove(aheadSubject);
    reloadData();
}

void RulesEditorTableController::fileStateDidChange()
{
    Q_EMIT fileDidChange();
    showFailure();
    const workflow::DocumentWork work = m_document.work();
    m_fileWork->setWorking(work != workflow::DocumentWork::none && work != workflow::DocumentWork::recording);
    if (!m_document.isFileAhead())
        m_ui->notices->remove(aheadSubject);
    if (!m_document.failure() || m_document.isWorking())
        return m_ui->notices->remove(writeSubject);
    m_ui->notices->add({.text = tr("Nothing was written, the last change is not in the rules file: %1")
                                    .arg(toQt(*m_document.failure())),
        .buttons = {{tr("Write Now"), [this] { m_document.writeNow(); }}},
        .subject = writeSubject});
}

void RulesEditorTableController::documentHasNews(const workflow::DocumentNews& news)
{
    FootNotice notice{.text = toQt(news.text)};
    if (news.kind == workflow::DocumentNews::Kind::fileIsAhead) {
        notice.subject = aheadSubject;
        notice.buttons.push_back({tr("Take Over Now"), [this] { m_document.takeForeignChanges(); }});
    } else if (news.shownFrom) {
        notice.buttons.push_back(
            {tr("Show"), [this, version = *news.shownFrom] { showHistoryFrom(version); }});
    } else if (!news.rules.empty()) {
        notice.buttons.push_back({tr("Show"), [this, rules = news.rules] { showFirstOf(rules); }});
    }
    if (news.version)
        notice.buttons.push_back({tr("Restore"), [this, version = *news.version] {
                                      m_document.restore(version);
                                      reloadData();
                                  }});
    if (news.kind == workflow::DocumentNews::Kind::cutShort) {
        notice.subject = cutSubject;
        notice.buttons.push_back({tr("Write Whole Lines"), [this] { writeWholeLines(); }});
    }
    m_ui->notices->add(std::move(notice));
}

// Of two equal rules the first is deleted, whichever is selected: then a different one remains than the user
// expects.
void RulesEditorTableController::reportRemaining(const std::vector<rules::RuleRef>& remaining)
{
    if (remaining.empty())
        return;
    m_ui->notices->add({.text = toQt(workflow::remainingText(remaining)),
        .buttons
        = {{tr("Show"), [this, remaining] { showFirstOf(remaining); }}, {tr("Undo"), [this] { undo(); }}},
        .subject = QStringLiteral("remaining")});
}

// Selects the first of the rules that is still stored.
void RulesEditorTableController::showFirstOf(const std::vector<rules::RuleRef>& rules)
{
    const auto stored = std::find_if(
        rules.begin(), rules.end(), [this](const rules::RuleRef& rule) { return m_store.isStored(rule); });
    if (stored != rules.end())
        revealRule(*stored);
}

void RulesEditorTableController::keepWholeLines()
{
    workflow::ProgramSettings settings = m_document.settings();
    settings.wholeLines = true;
    m_document.setSettings(settings);
    if (const auto problem = writeProgramSettings(workflow::defaultSettingsFile(), settings))
        m_ui->notices->add({.text = toQt(*problem)});
}

void RulesEditorTableController::writeWholeLines()
{
    keepWholeLines();
    m_document.perform({}, {"Write Whole Lines"});
}

} // namespace quorvane::windows
