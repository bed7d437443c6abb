#pragma once

#include "rules/WatchRule.h"
#include "windows/RuleEditorWindow.h"

namespace quorvane::windows {

// The editor of one watch rule.
class EditWatchWindowController : public RuleEditorWindow {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the window. Without a parent the window stands for
    // itself.
    EditWatchWindowController(workflow::RulesDocument& document, desktop::Workspace& workspace,
        platform::Log& log, QWidget* parent = nullptr);

    // Never null; a rule with nothing in it until one is set. Set before the window is shown.
    const rules::WatchRulePtr& watchRule() const { return std::get<rules::WatchRulePtr>(rule()); }
    void setWatchRule(const rules::WatchRulePtr& rule) { setRule(rule); }

    void updateWatchEditor() { updateEditor(); }
    void autoSetWatchType() { autoSetType(); }

protected:
    // The same for every rule.
    QString title() const override;
};

} // namespace quorvane::windows
