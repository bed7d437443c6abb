#pragma once

#include "windows/BackgroundThread.h"
#include "workflow/PlannedChange.h"
#include "workflow/RulesPlace.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <vector>

class QComboBox;
class QWidget;

namespace quorvane::workflow {
class RulesDocument;
}

namespace quorvane::windows {

class ChangeWindow;
class PathField;
class RulesTable;

// The commands of the main window that change all selected rules at once. Each is one action. A command that
// changes more than one rule, merges equal rules, or needs input is previewed in a ChangeWindow. System rules
// are never changed. User interface thread only.
class SelectionController : public QObject {
    Q_OBJECT
public:
    // `window` is the parent of other windows. Owns no argument; all must outlive this object.
    SelectionController(QWidget& window, RulesTable& table, workflow::RulesDocument& document);
    ~SelectionController() override;

    // Sets where programs are looked up; initially this machine.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Ask for the new value.
    void setTag();
    void changeOperations();
    // PolicyClass::allow or deny. Watch rules are unchanged.
    void setClass(std::int32_t policyClass);
    // Bind each rule to its program in its current state, or to nothing.
    void rebind();
    void clearConstraint();
    // Asks for a program and copies the rules, including system rules, for it.
    void copyToProgram();
    // Asks where the program of the first rule is now, offering candidates as they are found, and changes all
    // of its rules, selected or not.
    void moveProgram();
    // The same for the program at `from`.
    void moveProgram(const std::string& from);

    // The selected rules as lines of a rules file.
    QString selectedText() const;

    // Call it when the stored rules may have changed: updates an open preview.
    void rulesDidChange();

private:
    using MakePlan = std::function<workflow::PlannedChange(
        const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds)>;

    struct Command {
        QString title; // of the preview and of the action
        QString verb; // on the button
        std::string action; // its name in the history, before "Rule" or "3 Rules"
        bool takesWatchRules = true;
        bool takesSystemRules = false;
    };

    // The plan of the command for those of the rules that it applies to and that are still stored.
    workflow::PlannedChange planned(const Command& command, const std::vector<rules::RuleRef>& selected,
        rules::LineEnds lineEnds, const MakePlan& plan) const;
    using Plan = std::function<workflow::PlannedChange(rules::LineEnds lineEnds)>;
    ChangeWindow& openPreview(const Command& command, Plan plan);
    // `first` is the initial plan.
    ChangeWindow& openPreview(const Command& command, Plan plan, workflow::PlannedChange first);
    void perform(const Command& command, const workflow::PlannedChange& planned);
    // Performs it at once if a single rule changes and none are merged; otherwise previews it.
    void performOrPreview(const Command& command, const MakePlan& plan);
    void patch(const Command& command, const workflow::RulePatch& patch);
    rules::LineEnds lineEnds() const;
    void offerCandidates(const std::string& from, QComboBox& found, PathField& program);

    QWidget& m_window;
    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    QPointer<ChangeWindow> m_preview; // the open one
    std::stop_source m_searching; // for the program of the latest preview
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
