#pragma once

#include "rules/RuleManager.h"
#include "windows/BackgroundThread.h"
#include "workflow/ImportForesight.h"
#include "workflow/ReviewReading.h"
#include "workflow/StateDict.h"

#include <QDialog>
#include <QTimer>

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Ui {
class ImportWindowController;
}

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::platform {
class Log;
} // namespace quorvane::platform

namespace quorvane::workflow {
class ImportDelegate;
class RulesDocument;
} // namespace quorvane::workflow

namespace quorvane::windows {

class ImportTableModel;

// The review of a rules file: lists its rules with a check box each, initially all ticked, and passes those
// still ticked to its delegate when the user chooses Import. User interface thread only.
//
// A bar above the list has the kinds of its rules and can filter by one. Hidden rules are imported as well
// when they are ticked.
//
// The file is read when the window is first shown, a long one on another thread: until it is there, the list
// is empty and nothing can be imported. Deliberate: however the window closes, the fail-safe file
// is deleted, even if another file was under review; suggestions that were not accepted are lost. They stay
// only when the accepted rules could not be written.
class ImportWindowController : public QDialog {
    Q_OBJECT
public:
    // Rules already in the document's store are marked. Owns no argument; all must outlive the window.
    ImportWindowController(workflow::RulesDocument& document, desktop::Workspace& workspace,
        platform::Log& log, QWidget* parent = nullptr);
    ~ImportWindowController() override;

    const std::string& path() const { return m_path; }
    // Set it before the window is shown.
    void setPath(std::string path);
    // Reviews a text instead of a file. Call it before the window is shown.
    void setText(std::string text);
    // Sets where programs and paths are looked up; initially this machine. Call it before the window is
    // shown.
    void setPlace(const workflow::RulesPlace& place);
    // Lists only the rules of lines that contain several, as separate rules. Call it before the window is
    // shown.
    void listJoinedLinesOnly() { m_listing = Listing::joinedLines; }

    workflow::ImportDelegate* delegate() const { return m_delegate; }
    // Not owned; may be null: then Import only closes the window.
    void setDelegate(workflow::ImportDelegate* delegate) { m_delegate = delegate; }

    // Loads the file once, a long one a little later; without a path the window stays empty and tries again
    // when it is next shown.
    void awakeFromNib();
    // Reads the file and ticks all rules.
    void reloadData();
    // Lists what another thread has read; none when memory did not suffice for it.
    void takeRead(std::optional<workflow::ReviewedRules> read);
    std::size_t numberOfRowsInTableView() const;
    // Marks again which rules are already present. Ticks, order and selection stay.
    void presentRulesDidChange();

    // True while rules are passed to the delegate: the window must not be deleted then.
    bool isImporting() const { return m_isImporting; }

    // Called however the window is closed. Does nothing during an import.
    void done(int result) override;

public Q_SLOTS:
    // Passes the ticked rules to the delegate, in row order, and closes the window. If it takes long, events
    // are processed meanwhile; input to any window is dropped.
    void importAction();
    // Call it when the check box of the rule with the sequence number `tag` was clicked.
    void checkBoxValueChanged(qint64 tag, bool isOn);
    // Lists the rules of lines that contain several as separate rules, with all others. Those that have lost
    // text are not ticked.
    void takeApart();
    // Ticks every shown rule, or unticks them when all are ticked.
    void toggleAllTicks();
    // Ticks the rules of the selected rows, or unticks them when all are ticked.
    void toggleSelectedTicks();
    // Sorts by a column; see RulesEditorTableController.
    void sortByColumn(int column);

Q_SIGNALS:
    // The rules have been counted by the expected effect of importing them.
    void wasCounted();

protected:
    void showEvent(QShowEvent* event) override;

private:
    using Listing = workflow::ReviewReading::Listing;

    void setUpTable();
    void setUpMenu();
    workflow::ReviewReading reading() const;
    void readInBackground(workflow::ReviewReading reading);
    enum class Reading { done, underWay, failed };
    void setReading(Reading reading);
    void list(workflow::ReviewedRules read);
    void freeRules();
    std::shared_ptr<const rules::RuleRows> shownRows() const;
    void findFailing();
    void foresightDidChange();
    void ticksDidChange();
    void reloadTable();
    void startCounting();
    void examine();
    void updateCounts();
    void importTickedRules();
    void windowWillClose();

    workflow::RulesDocument& m_document;
    const rules::RuleManager& m_present; // the user's rules
    platform::Log& m_log;
    std::unique_ptr<Ui::ImportWindowController> m_ui;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine().withoutHomes();
    std::string m_path; // of the file, or a name for the text
    std::optional<std::string> m_text; // none: the contents of the file
    workflow::ImportDelegate* m_delegate = nullptr;
    workflow::StateDict m_stateDict;
    ImportTableModel* m_model; // owned by this window
    std::unique_ptr<rules::RuleManager> m_ruleManager; // null until the file is loaded
    std::vector<rules::SortDescriptor> m_sortDescriptors;
    std::unique_ptr<rules::RuleManager>
        m_joinedRules; // of its lines that contain several; null without such lines
    std::unique_ptr<workflow::ImportForesight> m_foresight; // null until it is complete
    std::unique_ptr<workflow::ImportForesight> m_coming; // the one being computed; null when none is
    std::shared_ptr<const workflow::RuleSequences> m_failing; // null until they are known
    Listing m_listing = Listing::file;
    std::size_t m_joinedLines = 0; // in the file
    QTimer m_counting;
    bool m_initialize = false; // true once the file is loaded, or is being read
    Reading m_reading = Reading::done; // by another thread
    bool m_isImporting = false;
    bool m_hasFailed = false; // the accepted rules could not be written
    std::stop_source m_findingFailing;
    BackgroundThread m_thread; // destroyed first
};

} // namespace quorvane::windows
