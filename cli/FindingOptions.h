#pragma once

#include "workflow/RuleFindings.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace quorvane::cli {

// --only and --skip, which select the kinds of findings.
class FindingOptions {
public:
    void addTo(CLI::App& command);

    // The kinds. Throws CLI::ValidationError for words that are not kinds, and for a kind that requires
    // programs and paths to be looked up when they are not.
    workflow::FindingKinds kinds(bool isNowhere) const;

private:
    std::optional<std::string> m_only;
    std::optional<std::string> m_skipped;
};

// The kind of that name. Throws CLI::ValidationError, which names `option`, when there is none, and for one
// that requires programs and paths to be looked up when they are not.
workflow::FindingKind findableKindGiven(const std::string& option, const std::string& name, bool isNowhere);

} // namespace quorvane::cli
