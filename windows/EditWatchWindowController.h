#pragma once

#include "rules/WatchRule.h"
#include "windows/RuleEditorWindow.h"

namespace quorvane::windows {

// The editor of one watch rule. User interface thread only.
class EditWatchWindowController : public RuleEditorWindow {
    Q_OBJECT
public:
    // Owns no argument; all must outlive the window. Without a parent it is a top-level window.
    EditWatchWindowController(workflow::RulesDocument& document, desktop::Workspace& workspace,
        platform::Log& log, QWidget* parent = nullptr);

    // Never null; an empty rule until one is set. Set it before the window is shown.
    const rules::WatchRulePtr& watchRule() const { return std::get<rules::WatchRulePtr>(rule()); }
    void setWatchRule(const rules::WatchRulePtr& rule) { setRule(rule); }

    void updateWatchEditor() { updateEditor(); }
    void autoSetWatchType() { autoSetType(); }

protected:
    // The same for every rule.
    QString title() const override;
};

} // namespace quorvane::windows
