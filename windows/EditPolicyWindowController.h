#pragma once

#include "rules/PolicyRule.h"
#include "windows/RuleEditorWindow.h"

namespace quorvane::windows {

// The editor of one allow or deny rule.
class EditPolicyWindowController : public RuleEditorWindow {
    Q_OBJECT
public:
    // Nothing given is owned; all of it must outlive the window. Without a parent the window stands for
    // itself.
    EditPolicyWindowController(workflow::RulesDocument& document, desktop::Workspace& workspace,
        platform::Log& log, QWidget* parent = nullptr);

    // Never null; a rule with nothing in it until one is set. Set before the window is shown.
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
