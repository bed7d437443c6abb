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

// Fixes problems of rules, each time as one action that can be undone. User interface thread only.
class RuleFixes : public QObject {
    Q_OBJECT
public:
    // Owns no argument; all must outlive this object.
    RuleFixes(RulesTable& table, workflow::RulesDocument& document, SelectionController& selection);

    // Sets where programs are looked up.
    void setPlace(const workflow::RulesPlace& place) { m_place = place; }

    // Selects the rule in the table; does nothing when it is no longer stored.
    void show(const rules::RuleRef& rule);
    // Removes exactly this rule; does nothing when it is no longer stored.
    void remove(const rules::RuleRef& rule);
    // Asks where the program at `path` is now, and changes all of its rules to that path.
    void moveProgram(const std::string& path);
    // Binds the rule to its program in its current state, which is read on another thread.
    void rebind(const rules::RuleRef& rule);

private:
    RulesTable& m_table;
    workflow::RulesDocument& m_document;
    SelectionController& m_selection;
    workflow::RulesPlace m_place = workflow::RulesPlace::thisMachine();
    BackgroundThread m_thread;
};

} // namespace quorvane::windows
