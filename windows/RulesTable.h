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

// The interface of the main window's table of rules for the window's parts. User interface thread only.
class RulesTable {
public:
    RulesTable() = default;
    RulesTable(const RulesTable&) = delete;
    RulesTable& operator=(const RulesTable&) = delete;
    virtual ~RulesTable() = default;

    // From the top down.
    virtual std::vector<rules::RuleRef> selectedRules() const = 0;

    // The same, cheap for any number of rules.
    virtual workflow::RulesSelection selection() const = 0;

    // Replaces the selection by those of the rules that are shown, and scrolls to the first of them. Does
    // nothing when none is shown.
    virtual void selectRules(const std::vector<rules::RuleRef>& rules) = 0;

    // Selects the rule; shows all rules first if the search or the hidden system rules exclude it. Does
    // nothing when it is no longer stored.
    virtual void revealRule(const rules::RuleRef& rule) = 0;

    // One action: changes the rules, writes the file and shows remarks at the bottom of the window. False
    // when the change is refused; the reason is then shown there.
    virtual bool perform(const workflow::PlannedChange& planned, const workflow::ChangeReason& reason) = 0;

    // Enables writing lines completely and saves that setting; the file follows with the next change.
    virtual void keepWholeLines() = 0;

    // Shows a notice at the bottom of the window.
    virtual void addNotice(FootNotice notice) = 0;
};

} // namespace quorvane::windows
