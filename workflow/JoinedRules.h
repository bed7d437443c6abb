#pragma once

#include "platform/FileIdentity.h"
#include "rules/RuleValue.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvane::workflow {

// The separate rules of a file in which lines contain several (rules/JoinedLines.h).
struct RulesApart {
    struct Rule {
        rules::RuleValue rule;
        bool isCut = false; // part of its text is lost
    };
    std::vector<Rule> rules; // in the order of the file
};

// How many lines contain several rules. All functions: any thread, any bytes.
std::size_t joinedLineCount(std::string_view bytes);

// The same for the file at `path`; 0 when it cannot be read, or memory runs out.
std::size_t joinedLineCountOfFile(const std::string& path);

// The rules that a file's joined lines are read as: the first of each line. One thread at a time.
class JoinedLinesOfFile {
public:
    // No file when `path` is empty.
    explicit JoinedLinesOfFile(std::string path)
        : m_path(std::move(path))
    {
    }
    const std::string& path() const { return m_path; }

    // For the current file, which is read again only when it has changed. Throws std::bad_alloc.
    const std::vector<rules::RuleValue>& rules();

private:
    std::string m_path;
    std::optional<platform::FileIdentity> m_identity; // of the file that was read
    std::vector<rules::RuleValue> m_rules;
};

// The rules of only these lines. One whose operations are lost is skipped: it would decide nothing.
RulesApart rulesOfJoinedLines(std::string_view bytes);

// All rules of the file, with joined lines separated. Of equal ones only the first.
RulesApart rulesApart(std::string_view bytes);

} // namespace quorvane::workflow
