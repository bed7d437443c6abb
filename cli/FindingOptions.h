#pragma once

#include "workflow/RuleFindings.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace quorvane::cli {

// --only and --skip, which say what findings are looked for.
class FindingOptions {
public:
    void addTo(CLI::App& command);

    // The kinds. Throws CLI::ValidationError for words that are none, and for a kind that is named although
    // nothing can be told of it where nothing is looked up.
    workflow::FindingKinds kinds(bool isNowhere) const;

private:
    std::optional<std::string> m_only;
    std::optional<std::string> m_skipped;
};

// The kind of that name. Throws CLI::ValidationError, which names `option`, when there is none, and for one
// of which nothing can be told where nothing is looked up.
workflow::FindingKind findableKindGiven(const std::string& option, const std::string& name, bool isNowhere);

} // namespace quorvane::cli
