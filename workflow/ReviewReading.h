#pragma once

#include "platform/Locations.h"
#include "rules/RuleManager.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane::platform {
class Log;
}

namespace quorvane::workflow {

// The rules that the review of an import lists.
struct ReviewedRules {
    std::unique_ptr<rules::RuleManager> rules{};
    std::vector<std::int64_t> cut{}; // the sequence numbers of those that have lost text
    std::size_t joinedLines = 0; // lines of the file that contain several rules, where all is listed as read
    std::unique_ptr<rules::RuleManager> joinedRules{}; // the rules of such lines; null without them
};

// How to read them; a value, for any thread.
struct ReviewReading {
    enum class Listing {
        file, // as any reader of the file reads it
        joinedLines, // only the rules of lines that contain several, as separate rules
        allApart, // these with all others
    };

    // Throws std::bad_alloc.
    ReviewedRules read() const;
    // Whether that takes longer than a window should keep a user waiting.
    bool isLong() const;

    std::string path; // of the file, or a name for the text
    std::optional<std::string> text; // none: the contents of the file
    Listing listing = Listing::file;
    platform::Locations locations;
    platform::Log& log;
};

} // namespace quorvane::workflow
