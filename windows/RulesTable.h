#pragma once

#include "rules/RuleRef.h"
#include "windows/FootNotices.h"
#include "workflow/ChangeReason.h"
#include "workflow/RulesSelection.h"

#include <vector>

namespace quorvane::workflow {
struct PlannedChange;
}

namespace quorvane::windows {

// What parts of the main window ask of its table of rules. User interface thread only.
class RulesTable {
public:
    RulesTable() = default;
    RulesTable(const RulesTable&) = delete;
    RulesTable& operator=(const RulesTable&) = delete;
    virtual ~RulesTable() = default;

    // From the top down.
    virtual std::vector<rules::RuleRef> selectedRules() const = 0;

    // The same for any number of rules at once.
    virtual workflow::RulesSelection selection() const = 0;

    // Selects those of the rules that are shown, in place of what was selected, and scrolls to the first of
    // them. Nothing happens when none is shown.
    virtual void selectRules(const std::vector<rules::RuleRef>& rules) = 0;

    // Selects the rule, and shows all rules for it when the search or the missing system rules hide it.
    // Nothing happens when it is no longer stored.
    virtual void revealRule(const rules::RuleRef& rule) = 0;

    // One action: changes the rules, writes the file and reports at the foot what should be known besides.
    // False when the change may not be made; the foot then says why.
    virtual bool perform(const workflow::PlannedChange& planned, const workflow::ChangeReason& reason) = 0;

    // Has lines written whole from now on, which is kept as a setting; the file follows with the next change.
    virtual void keepWholeLines() = 0;

    // Says something at the foot of the window.
    virtual void addNotice(FootNotice notice) = 0;
};

} // namespace quorvane::windows
