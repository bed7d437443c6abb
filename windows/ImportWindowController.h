#pragma once

#include "rules/RuleManager.h"
#include "windows/BackgroundThread.h"
#include "workflow/ImportForesight.h"
#include "workflow/JoinedRules.h"
#include "workflow/StateDict.h"

#include <QDialog>
#include <QTimer>

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
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

namespace quorvane::rules {
class RulesFileText;
}

namespace quorvane::workflow {
class ImportDelegate;
class RulesDocument;
} // namespace quorvane::workflow

namespace quorvane::windows {

class ImportTableModel;

// The review of a rules file: lists its rules with a check box each, all ticked at first, and hands those
// that are still ticked to its delegate when the person chooses Import.
//
// Above the list stand the kinds of rules that it holds; one of them alone can be shown. What is hidden is
// imported all the same when it is ticked.
//
// The file is read when the window is first shown. Deliberate: however the window closes, the fail-safe file
// is deleted, also when another file was under review; suggestions that nobody took are gone for good. They
// stay only when the rules that were taken could not be written.
class ImportWindowController : public QDialog {
    Q_OBJECT
public:
    // Rules that `present` holds already are marked. Nothing given is owned; all of it must outlive the
    // window.
    ImportWindowController(workflow::RulesDocument& document, desktop::Workspace& workspace,
        platform::Log& log, QWidget* parent = nullptr);
    ~ImportWindowController() override;

    const std::string& path() const { return m_path; }
    // To be set before the window is shown.
    void setPath(std::string path);
    // Reviews a text in place of a file. To be called before the window is shown.
    void setText(std::string text);
    // Where programs and paths are looked up; this machine at first. To be called before the window is shown.
    void setPlace(const workflow::RulesPlace& place);
    // Only rules of lines that hold several are listed, as rules of their own. To be called before the window
    // is shown.
    void listJoinedLinesOnly() { m_listing = Listing::joinedLines; }

    workflow::ImportDelegate* delegate() const { return m_delegate; }
    // Not owned; may be null, then Import only closes the window.
    void setDelegate(workflow::ImportDelegate* delegate) { m_delegate = delegate; }

    // Loads the file, once: a window without a path stays empty, and the next time it is shown tries again.
    void awakeFromNib();
    // Reads the file, from now on with all rules ticked.
    void reloadData();
    std::size_t numberOfRowsInTableView() const;
    // Marks anew which rules are already present. Ticks, order and selection stay.
    void presentRulesDidChange();

    // True while rules are handed to the delegate: the window must not be deleted then.
    bool isImporting() const { return m_isImporting; }

    // However the window is closed, it ends here. Nothing happens during an import.
    void done(int result) override;

public Q_SLOTS:
    // Hands the ticked rules to the delegate, in the order of the rows, and closes the window. Events are
    // handled meanwhile when it takes long; input to any window is dropped.
    void importAction();
    // The check box of the rule with the sequence number `tag` is on, or off.
    void checkBoxValueChanged(qint64 tag, bool isOn);
    // Lists the rules of lines that hold several as rules of their own, beside all others. Those that have
    // lost text are not ticked.
    void takeApart();
    // Ticks every rule that is shown, or none when all are ticked.
    void toggleAllTicks();
    // Ticks the rules of the selected rows, or unticks them when all are ticked.
    void toggleSelectedTicks();
    // Sorts by a column; see RulesEditorTableController.
    void sortByColumn(int column);

Q_SIGNALS:
    // The rules are counted by what would become of them.
    void wasCounted();

protected:
    void showEvent(QShowEvent* event) override;

private:
    enum class Listing { file, joinedLines, allApart };

    void setUpTable();
    void setUpMenu();
    std::unique_ptr<rules::RuleManager> readRules();
    std::unique_ptr<rules::RuleManager> storeOf(const workflow::RulesApart& apart) const;
    void untickCutRules(const workflow::RulesApart& apart);
    std::string_view textOf(const rules::RulesFileText& file) const;
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
    std::optional<std::string> m_text; // none: that of the file
    workflow::ImportDelegate* m_delegate = nullptr;
    workflow::StateDict m_stateDict;
    ImportTableModel* m_model; // owned by this window
    std::unique_ptr<rules::RuleManager> m_ruleManager; // none until the file is loaded
    std::vector<rules::SortDescriptor> m_sortDescriptors;
    std::unique_ptr<rules::RuleManager>
        m_joinedRules; // of its lines that hold several; null without such lines
    std::unique_ptr<workflow::ImportForesight> m_foresight; // null until it is known
    std::unique_ptr<workflow::ImportForesight> m_coming; // the one that is being made; null when none is
    std::shared_ptr<const workflow::RuleSequences> m_failing; // null until they are known
    Listing m_listing = Listing::file;
    std::size_t m_joinedLines = 0; // in the file
    QTimer m_counting;
    bool m_initialize = false; // true once the file is loaded
    bool m_isImporting = false;
    bool m_hasFailed = false; // the rules handed over could not be written
    std::stop_source m_findingFailing;
    BackgroundThread m_thread; // goes first
};

} // namespace quorvane::windows
