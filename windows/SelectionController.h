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

// The commands of the main window that change all selected rules at once. Each is one action. What changes
// more than one rule, folds rules, or asks for something besides is shown first in a ChangeWindow. Rules of
// the system are never changed. User interface thread only.
class SelectionController : public QObject {
    Q_OBJECT
public:
    // Windows stand over `window`. Nothing given is owned; all of it must outlive this.
    SelectionController(QWidget& window, RulesTable& table, workflow::RulesDocument& document);
    ~SelectionController() override;

    // Where programs are looked up from now on; this machine at first.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Ask for what the rules are to have.
    void setTag();
    void changeOperations();
    // PolicyClass::allow or deny. Watch rules stay what they are.
    void setClass(std::int32_t policyClass);
    // Binds each rule to its program as it is now; or to nothing.
    void bindAnew();
    void clearConstraint();
    // Asks for the program that copies of the rules shall be for. Of system rules there are copies as well.
    void copyToProgram();
    // Asks where the program of the first rule is now; where it may be is offered as soon as it is found. All
    // its rules follow, selected or not.
    void moveProgram();
    // The same for the program at `from`.
    void moveProgram(const std::string& from);

    // The selected rules as lines of a rules file.
    QString selectedText() const;

    // The stored rules may be others now: a preview follows.
    void rulesDidChange();

private:
    using MakePlan = std::function<workflow::PlannedChange(
        const std::vector<rules::RuleRef>& rules, rules::LineEnds lineEnds)>;

    struct Command {
        QString title; // of the preview, and in words what is done
        QString verb; // on the button
        std::string action; // as the history names it, in front of "Rule" or "3 Rules"
        bool takesWatchRules = true;
        bool takesSystemRules = false;
    };

    // What the command would do to those of the rules that it is for and that are still stored.
    workflow::PlannedChange planned(const Command& command, const std::vector<rules::RuleRef>& selected,
        rules::LineEnds lineEnds, const MakePlan& plan) const;
    using Plan = std::function<workflow::PlannedChange(rules::LineEnds lineEnds)>;
    ChangeWindow& openPreview(const Command& command, Plan plan);
    // `first` is what has been planned already.
    ChangeWindow& openPreview(const Command& command, Plan plan, workflow::PlannedChange first);
    void perform(const Command& command, const workflow::PlannedChange& planned);
    // At once where one rule changes and none is folded.
    void performOrPreview(const Command& command, const MakePlan& plan);
    void patch(const Command& command, const workflow::RulePatch& patch);
    rules::LineEnds lineEnds() const;
    void offerCandidates(const std::string& from, QComboBox& found, PathField& program);

    QWidget& m_window;
    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    QPointer<ChangeWindow> m_preview; // the one that is open
    std::stop_source m_searching; // for the program of the latest preview
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
