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

// The main window's exchange of rules through files: exports, and imports by way of a review.
class ExchangeController : public QObject {
    Q_OBJECT
public:
    // Panels and reviews stand over `window`. A review hands its rules to `delegate`, which hands them on to
    // importRule() and didFinishImportingRules(). Nothing given is owned; all of it must outlive this.
    ExchangeController(QWidget& window, workflow::ImportDelegate& delegate, workflow::RulesDocument& document,
        workflow::ApplicationServices& application, desktop::Workspace& workspace, platform::Log& log);

    // Where the programs and paths of rules under review are looked up; this machine at first. A review that
    // is open keeps its place.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Ask where to, without waiting for the answer. The rules file goes out as it is, byte for byte. Failures
    // are only logged.
    void exportRules();
    void exportSelectedRules(const std::vector<rules::RuleRef>& rules);

    // Asks for an exchange file, and opens the review of its rules.
    void importRules();
    // Opens the review of a rules file, in place of one that is open. A file that is not UTF-8 text or not
    // there is no failure: nothing happens then, nor without a path, nor while rules are being imported.
    void handleFileImport(const std::optional<std::string>& path);
    // Opens the review of the rules that a text holds. False, and nothing happens, when it holds none, or
    // while rules are being imported.
    bool reviewText(const std::string& text);
    // Opens the reviews of these files one after the other, each when the one before is closed. Reviews that
    // are open or due come first.
    void reviewFiles(const std::vector<std::string>& paths);
    // The review of suggestions that wait is due half a second from now; nothing when none wait.
    void offerSuggestions();
    // Opens the review of the suggestions in the fail-safe file.
    void handleFailSafeImport();
    // Opens the review of rules that lines of the user's own file hold besides their first.
    void reviewJoinedLines();
    // Looks, beside the window's thread, for such lines; joinedLinesFound() tells of them.
    void lookForJoinedLines();

    void importRule(const rules::RuleRef& rule);
    bool didFinishImportingRules();

    // True while a review hands over its rules.
    bool isImporting() const;
    // The user's rules may be others now: an open review marks anew which of its rules are present.
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
    QPointer<ImportWindowController> m_importWindowController; // the review that is open
    std::deque<std::string> m_filesToReview;
    QTimer m_untilSuggestions;
};

} // namespace quorvane::windows
