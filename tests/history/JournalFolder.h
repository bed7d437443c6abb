#pragma once

#include "history/Journal.h"

#include "platform/Log.h"
#include "tests/support/TemporaryFolder.h"

#include <memory>
#include <string>
#include <string_view>

namespace quorvane {

// A state folder and a watched file of a test's own.
class JournalFolder {
public:
    std::string state() const { return m_folder.path("state/quorvane"); }
    std::string rules() const { return m_folder.path("rules.rc"); }
    JournalPlace place() const { return {state(), rules()}; }
    const TemporaryFolder& folder() const { return m_folder; }

    std::unique_ptr<Journal> journal(const JournalLimits& limits = {})
    {
        return Journal::open(state(), rules(), limits, m_log);
    }

private:
    TemporaryFolder m_folder;
    Log m_log{{}};
};

// An action of ours that leads to these bytes, which must outlive the result.
inline NewVersion version(std::string_view bytes)
{
    NewVersion made;
    made.program = "test";
    made.action = "Change rules";
    made.bytes = bytes;
    return made;
}

} // namespace quorvane
