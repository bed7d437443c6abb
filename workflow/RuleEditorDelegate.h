#pragma once

namespace quorvane::workflow {

// Notified by a rule editor when it has saved. User interface thread only.
class RuleEditorDelegate {
public:
    RuleEditorDelegate() = default;
    RuleEditorDelegate(const RuleEditorDelegate&) = delete;
    RuleEditorDelegate& operator=(const RuleEditorDelegate&) = delete;
    virtual ~RuleEditorDelegate() = default;

    // The store's rules have changed and a write of the user's file was requested.
    virtual void reloadData() = 0;
};

} // namespace quorvane::workflow
