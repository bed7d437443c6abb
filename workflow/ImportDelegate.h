#pragma once

#include "rules/RuleRef.h"

namespace quorvane::workflow {

// Receives the rules that the user has accepted in an import review. User interface thread only.
class ImportDelegate {
public:
    ImportDelegate() = default;
    ImportDelegate(const ImportDelegate&) = delete;
    ImportDelegate& operator=(const ImportDelegate&) = delete;
    virtual ~ImportDelegate() = default;

    // Called once for each accepted rule, in the order of the review's rows.
    virtual void importRule(const rules::RuleRef& rule) = 0;

    // Called after the last of them, even if there was none. False when the rules could not be written: the
    // suggestions that they came from must then be kept.
    virtual bool didFinishImportingRules() = 0;
};

} // namespace quorvane::workflow
