#pragma once

#include "rules/RuleRef.h"
#include "windows/BackgroundThread.h"
#include "workflow/RulesPlace.h"

#include <QObject>

#include <string>

namespace quorvane::workflow {
class RulesDocument;
}

namespace quorvane::windows {

class RulesTable;
class SelectionController;

// Mends what is wrong with a rule, each time as one action that Undo takes back. User interface thread only.
class RuleMending : public QObject {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive this.
    RuleMending(RulesTable& table, workflow::RulesDocument& document, SelectionController& selection);

    // Where programs are looked up from now on.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Selects the rule in the table; nothing when it is not stored any more.
    void show(const rules::RuleRef& rule);
    // Removes this very rule; nothing when it is not stored any more.
    void remove(const rules::RuleRef& rule);
    // Asks where the program at `path` is now; all rules of it then name that place.
    void moveProgram(const std::string& path);
    // Binds the rule to its program as it is now. The program is read beside this thread.
    void bindAnew(const rules::RuleRef& rule);

private:
    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    SelectionController& m_selection;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
