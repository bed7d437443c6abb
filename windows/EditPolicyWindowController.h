#pragma once

#include "rules/PolicyRule.h"
#include "windows/RuleEditorWindow.h"

namespace quorvane::windows {

// The editor of one allow or deny rule. User interface thread only.
class EditPolicyWindowController : public RuleEditorWindow {
    Q_OBJECT
public:
    // Owns no argument; all must outlive the window. Without a parent it is a top-level window.
    EditPolicyWindowController(workflow::RulesDocument& document, desktop::Workspace& workspace,
        platform::Log& log, QWidget* parent = nullptr);

    // Never null; an empty rule until one is set. Set it before the window is shown.
    const rules::PolicyRulePtr& policyRule() const { return std::get<rules::PolicyRulePtr>(rule()); }
    void setPolicyRule(const rules::PolicyRulePtr& rule) { setRule(rule); }

    void updatePolicyEditor() { updateEditor(); }
    void autoSetPolicyType() { autoSetType(); }
    using RuleEditorWindow::setConstraintLabel;

protected:
    // The name of the rule's application.
    QString title() const override;
};

} // namespace quorvane::windows
