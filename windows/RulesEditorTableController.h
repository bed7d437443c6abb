#pragma once

#include "rules/RuleManager.h"
#include "windows/KeptDrafts.h"
#include "windows/RulesTable.h"
#include "windows/SelectionState.h"
#include "workflow/DocumentObserver.h"
#include "workflow/ImportDelegate.h"
#include "workflow/RuleCommands.h"
#include "workflow/RuleEditorDelegate.h"

#include <QMainWindow>
#include <QPointer>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class QMenu;

namespace Ui {
class RulesEditorTableController;
}

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::platform {
class Log;
} // namespace quorvane::platform

namespace quorvane::workflow {
class ApplicationServices;
class FileHistory;
class RulesDocument;
class RulesHistory;
struct ProgramSettings;
struct RunState;
} // namespace quorvane::workflow

namespace quorvane::windows {

class AsideController;
class BackgroundThread;
class EditPolicyWindowController;
class EditWatchWindowController;
class ExchangeController;
class HistoryWindow;
class MapWindow;
class PlaceMenu;
class ProblemsFinder;
class RuleEditorWindow;
class RowsRefresh;
class RulesFileFollower;
class RulesTableModel;
class SelectionController;
class SettingsWindow;
class SlowWork;
class TouchingWindow;

// The main window: the table of all rules of a store, with a search field, a switch for the system rules,
// sorting by the column titles, and the commands that create, edit, delete and tag rules. RuleCommands
// decides what a command does to rules and file; this class applies it to the table. ExchangeController
// handles imports and exports, RulesFileFollower changes of the rules file by other programs. User interface
// thread only.
class RulesEditorTableController : public QMainWindow,
                                   public RulesTable,
                                   public workflow::RuleEditorDelegate,
                                   public workflow::ImportDelegate,
                                   public workflow::DocumentObserver {
    Q_OBJECT
public:
    // Owns no argument; all must outlive the window.
    RulesEditorTableController(workflow::RulesDocument& document, workflow::ApplicationServices& application,
        workflow::RunState& run, desktop::Workspace& workspace, platform::Log& log);
    ~RulesEditorTableController() override;

    bool showsSystemRules() const;

    // Call it before the program ends: stores the unsaved contents of open editors, which the next main
    // window offers. A second call does nothing.
    void keepUnsavedRules();

    // Reloads the store's rows. Keeps selection and scroll position as far as their rules still exist. When
    // very many rules have to be sorted or searched for that, the table shows the former rows meanwhile.
    void reloadData() override;

    // Adds a file whose versions the history window shows, too. Not owned; must outlive the window.
    void addHistory(workflow::FileHistory& history);

    // Reports at the bottom which part of the programs' settings could not be used.
    void showSettingsProblem(const QString& problem);

    // Looks programs and paths up on a mounted volume, like choosing it in the menu of places.
    void useVolume(const std::string& folder);

    // Shows at the bottom, until the next call, why the preferences could not be saved; empty for none.
    void showPreferencesFailure(const QString& failure);

public Q_SLOTS:
    // Shows only rules that contain the search field's text.
    void searchFieldAction();
    // Shows the system rules among the others, or hides them.
    void hideSystemAction();
    // Sorts by a column; choosing the same column again reverses the order. Previous sort columns break ties.
    void sortByColumn(int column);
    // Moves the keyboard focus to the search field.
    void focusSearchField();
    // Clears the search field; if it is empty, moves the keyboard focus back to the table.
    void leaveSearchField();

    // Open an editor on a new rule.
    void newPolicyAction();
    void newWatchAction();
    void newPolicyRule();
    void newWatchRule();
    // The commands of the context menu, for the row that it was opened on; do nothing when there is none.
    void createNewPolicy();
    void editRule();
    void deleteRule();
    // Deletes the selected rules.
    void deleteRuleAction();
    // Opens the editor of the only selected rule; does nothing when several or none are selected.
    void doubleClickAction();
    // Undo the newest action, or redo the one undone last.
    void undo();
    void redo();
    // Shows the versions of the rules.
    void showHistory();
    // Shows the programs' own settings.
    void showSettings();
    // Begins to edit the tag of the only selected rule.
    void editTagOfSelectedRule();
    // Sets the tag edited in the table, which belongs to the first selected rule.
    void tableViewCellAction(const QString& tag);
    // Opens the context menu for a row.
    void menuWillOpen(int clickedRow, const QPoint& globalPosition);

    // See ExchangeController. Exports the rules that are selected at the time of the call.
    void exportRules();
    void exportSelectedRules();
    void importRules();
    void handleFailSafeImport();
    void reviewFiles(const std::vector<std::string>& paths);

public:
    // Initializes the window, once: reports a rules file that cannot be opened and restarts the program, or
    // schedules a review of pending suggestions.
    void awakeFromNib();
    // See RulesFileFollower.
    void relaunchAfterDelay(float delay);

    std::vector<rules::RuleRef> selectedRules() const override;
    workflow::RulesSelection selection() const override;
    void selectRules(const std::vector<rules::RuleRef>& rules) override;
    void revealRule(const rules::RuleRef& rule) override;
    bool perform(const workflow::PlannedChange& planned, const workflow::ChangeReason& reason) override;
    void keepWholeLines() override;
    void addNotice(FootNotice notice) override;

    // See ExchangeController.
    void handleFileImport(const std::optional<std::string>& path);
    void importRule(const rules::RuleRef& rule) override;
    bool didFinishImportingRules() override;

    // Opens another editor for this record. It deletes itself when it is closed.
    void editPolicy(const rules::PolicyRulePtr& rule);
    void editWatch(const rules::WatchRulePtr& rule);
    // Delete the rules of rows of the table. If no rule is selected afterwards, selects the following one, or
    // the last.
    void deleteRow(std::size_t row);
    void deleteRows(const std::vector<std::size_t>& rows);

    // Whether a menu or tool bar item is enabled now.
    bool validateToolbarItem(const QAction* item) const;
    bool validateMenuItem(const QAction* item) const;

    // True when the key was one of the table's commands: return, delete or backspace. Deliberate: return
    // opens policy rules only.
    bool keyDown(const QKeyEvent& key);

Q_SIGNALS:
    // The stored rules or their values may have changed.
    void rulesDidChange();
    // The rules file may have been written, or a write may have failed.
    void fileDidChange();
    // The selection or the values of the selected rules may have changed.
    void selectionDidChange();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void setUpTable();
    void setUpActions();
    void setUpSortMenu();
    void setUpCommands();
    void setUpExchange();
    void setUpActionsOnMany();
    void duplicateRule();
    void showTouching();
    void showMap();
    void reviewText(const QString& text);
    void setUpDocument();
    void setUpParts();
    void setUpNarrowing(ProblemsFinder& finder);
    void nameUndoAndRedo();
    void showHistoryFrom(std::int64_t version);
    void settingsWereSaved(const workflow::ProgramSettings& settings);
    void reportJoinedLines(qulonglong lines);
    void reportRemaining(const std::vector<rules::RuleRef>& remaining);
    void showFirstOf(const std::vector<rules::RuleRef>& rules);
    void writeWholeLines();
    void rulesWereMerged(const rules::ChangeSet& change) override;
    void rulesWereReloaded() override;
    void fileStateDidChange() override;
    void documentHasNews(const workflow::DocumentNews& news) override;
    void setUpRefresh();
    void sortBy(rules::SortKey key, int column);
    void sortDescriptorsDidChange();
    void reloadRows();
    void reloadTable();
    void showRows();
    void whenRowsAreShown(std::function<void()> work);
    void updateCounts();
    void showFailure();
    void validateItems();
    bool isRepeat(const QKeyEvent& key) const;
    workflow::RuleRow ruleRowAt(std::size_t row) const;
    std::optional<rules::RuleRef> ruleBelow(std::size_t row) const;
    RuleEditorWindow* edit(const rules::RuleRef& rule);
    void apply(const workflow::TableChange& change);
    void selectAfterDelete(
        const workflow::TableChange& change, const std::optional<rules::RuleRef>& following);
    void selectRule(int row);
    void showNewRule();
    void offerKeptRules();
    void openKeptRules();
    std::optional<rules::RuleRef> storedRuleLike(const rules::RuleRef& rule) const;

    workflow::RulesDocument& m_document;
    rules::RuleManager& m_store;
    workflow::ApplicationServices& m_application;
    workflow::RunState& m_run;
    desktop::Workspace& m_workspace;
    platform::Log& m_log;
    workflow::RuleCommands m_commands;
    KeptDrafts m_keptDrafts;
    std::unique_ptr<Ui::RulesEditorTableController> m_ui;
    RulesTableModel* m_model; // owned by this window
    std::vector<rules::SortDescriptor> m_sortDescriptors;
    std::unique_ptr<BackgroundThread> m_rowsThread;
    std::unique_ptr<RowsRefresh> m_refresh;
    std::unique_ptr<SlowWork> m_fileWork; // reading or writing the rules file on another thread
    std::vector<std::function<void()>> m_whenRowsAreShown;
    QString m_preferencesFailure;
    bool m_columnsFitted = false;
    QMenu* m_rulesEditorContextualMenu; // owned by this window, like its items
    QAction* m_newRuleMenuItem;
    QAction* m_editRuleMenuItem;
    QAction* m_deleteRuleMenuItem;
    std::optional<rules::RuleRef> m_clickedRule; // of the context menu
    QPointer<EditPolicyWindowController> m_editPolicyWindowController; // the latest
    QPointer<EditWatchWindowController> m_editWatchWindowController; // the latest
    std::optional<rules::RuleRef>
        m_newRule; // of the latest editor of a new rule; until it appears in the table
    bool m_initialize = true; // until the window is initialized
    bool m_unsavedRulesKept = false;
    quint64 m_lastKeyRelease = 0; // milliseconds of the window system's clock
    std::unique_ptr<workflow::RulesHistory> m_rulesHistory;
    std::vector<workflow::FileHistory*> m_histories; // in the order in which they are offered
    QPointer<HistoryWindow> m_historyWindow;
    QPointer<SettingsWindow> m_settingsWindow;
    QPointer<TouchingWindow> m_touchingWindow;
    QPointer<MapWindow> m_mapWindow;
    std::unique_ptr<ExchangeController> m_exchange;
    std::unique_ptr<SelectionController> m_selection;
    std::unique_ptr<AsideController> m_aside;
    std::unique_ptr<RulesFileFollower> m_follower; // uses the exchange
    std::unique_ptr<QObject> m_parts; // its children use this window's table
    PlaceMenu* m_places; // one of them
};

} // namespace quorvane::windows
