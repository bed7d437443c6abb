#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/ImportDelegate.h"
#include "workflow/RuleImport.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <deque>
#include <optional>
#include <string>
#include <vector>

class QWidget;

namespace quorvane::desktop {
class Workspace;
}

namespace quorvane::platform {
class Log;
} // namespace quorvane::platform

namespace quorvane::rules {
class RuleManager;
}

namespace quorvane::workflow {
class ApplicationServices;
class RulesDocument;
} // namespace quorvane::workflow

namespace quorvane::windows {

class ImportWindowController;

// The main window's exchange of rules through files: exports, and imports with a review. User interface
// thread only.
class ExchangeController : public QObject {
    Q_OBJECT
public:
    // `window` is the parent of panels and reviews. A review passes its rules to `delegate`, which forwards
    // them to importRule() and didFinishImportingRules(). Owns no argument; all must outlive this object.
    ExchangeController(QWidget& window, workflow::ImportDelegate& delegate, workflow::RulesDocument& document,
        workflow::ApplicationServices& application, desktop::Workspace& workspace, platform::Log& log);

    // Sets where the programs and paths of reviewed rules are looked up; initially this machine. An open
    // review keeps its place.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Ask for the destination, without blocking. The rules file is copied byte for byte. Failures are only
    // logged.
    void exportRules();
    void exportSelectedRules(const std::vector<rules::RuleRef>& rules);

    // Asks for an exchange file and opens a review of its rules.
    void importRules();
    // Opens a review of a rules file, replacing an open one. Does nothing, without a failure, for a file that
    // is missing or not UTF-8 text, without a path, and while rules are being imported.
    void handleFileImport(const std::optional<std::string>& path);
    // Opens a review of the rules in a text. False, and nothing happens, when it has none, or while rules are
    // being imported.
    bool reviewText(const std::string& text);
    // Opens reviews of these files one after the other, each when the previous one is closed. Reviews that
    // are open or pending come first.
    void reviewFiles(const std::vector<std::string>& paths);
    // Schedules a review of the pending suggestions in half a second; does nothing without suggestions.
    void offerSuggestions();
    // Opens a review of the suggestions in the fail-safe file.
    void handleFailSafeImport();
    // Opens a review of the rules that lines of the user's own file contain besides their first.
    void reviewJoinedLines();
    // Searches for such lines on another thread; joinedLinesFound() reports them.
    void lookForJoinedLines();

    void importRule(const rules::RuleRef& rule);
    bool didFinishImportingRules();

    // True while a review passes on its rules.
    bool isImporting() const;
    // Call it when the user's rules may have changed: an open review marks again which of its rules are
    // present.
    void presentRulesDidChange();

Q_SIGNALS:
    void joinedLinesFound(qulonglong lines);
    // An import has ended, and the store has read its file again.
    void rulesWereReloaded();

private:
    void reviewNextFile();
    void writeRules(const std::vector<rules::RuleRef>& rules, const std::string& path);
    ImportWindowController& openReview();
    ImportWindowController& openReview(const std::string& path);

    QWidget& m_window;
    workflow::ImportDelegate& m_delegate;
    workflow::RulesDocument& m_document;
    rules::RuleManager& m_store;
    workflow::ApplicationServices& m_application;
    desktop::Workspace& m_workspace;
    platform::Log& m_log;
    BackgroundThread m_thread;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    workflow::RuleImport m_import;
    QPointer<ImportWindowController> m_importWindowController; // the open review
    std::deque<std::string> m_filesToReview;
    QTimer m_untilSuggestions;
};

} // namespace quorvane::windows
