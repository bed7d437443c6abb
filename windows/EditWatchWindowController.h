#pragma once

#include "rules/WatchRule.h"
#include "windows/RuleEditorWindow.h"

namespace quorvane {

// The editor of one watch rule.
class EditWatchWindowController : public RuleEditorWindow {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the window. Without a parent the window stands for
    // itself.
    EditWatchWindowController(
        RulesDocument& document, Workspace& workspace, Log& log, QWidget* parent = nullptr);

    // Never null; a rule with nothing in it until one is set. Set before the window is shown.
    const WatchRulePtr& watchRule() const { return std::get<WatchRulePtr>(rule()); }
    void setWatchRule(const WatchRulePtr& rule) { setRule(rule); }

    void updateWatchEditor() { updateEditor(); }
    void autoSetWatchType() { autoSetType(); }

protected:
    // The same for every rule.
    QString title() const override;
};

} // namespace quorvane
