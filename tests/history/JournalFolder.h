#pragma once

#include "history/Journal.h"

#include "platform/Log.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane::test {

// A state folder and a watched file for a test.
class JournalFolder {
public:
    std::string state() const { return m_folder.path("state/quorvane"); }
    std::string rules() const { return m_folder.path("rules.rc"); }
    history::JournalPlace place() const { return {state(), rules()}; }
    const TemporaryFolder& folder() const { return m_folder; }

    std::unique_ptr<history::Journal> journal(const history::JournalLimits& limits = {})
    {
        return history::Journal::open(state(), rules(), limits, m_log);
    }
    bool mayBeUnderWay() const { return history::Journal::mayBeUnderWay(state(), rules()); }

private:
    TemporaryFolder m_folder;
    platform::Log m_log{{}};
};

// An action of ours that leads to these bytes, which must outlive the result.
inline history::NewVersion version(std::string_view bytes)
{
    history::NewVersion made;
    made.added = 1; // otherwise there would be nothing to undo
    made.program = "test";
    made.action = "Change rules";
    made.bytes = bytes;
    return made;
}

// Numbers of all versions, newest first.
inline std::vector<std::int64_t> numbersIn(history::Journal& journal)
{
    std::vector<std::int64_t> numbers;
    for (const history::JournalVersion& version : journal.versions())
        numbers.push_back(version.number);
    return numbers;
}

// A text of `lines` different lines, in which line `changed` contains `word`.
inline std::string textOfLines(std::size_t lines, std::size_t changed, std::string_view word)
{
    std::string text;
    std::uint64_t state = 1;
    for (std::size_t line = 0; line < lines; ++line) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        text += "policy allow path \"/Applications/" + std::to_string(state >> 20U) + "\" "
            + (line == changed ? std::string(word) : std::string("rwx")) + "\n";
    }
    return text;
}

} // namespace quorvane::test
