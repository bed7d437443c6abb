#pragma once

namespace quorvane::workflow {

// Told by a rule editor about what it has saved.
class RuleEditorDelegate {
public:
    RuleEditorDelegate() = default;
    RuleEditorDelegate(const RuleEditorDelegate&) = delete;
    RuleEditorDelegate& operator=(const RuleEditorDelegate&) = delete;
    virtual ~RuleEditorDelegate() = default;

    // The store's rules have changed and the user's file has been written.
    virtual void reloadData() = 0;
};

} // namespace quorvane::workflow
