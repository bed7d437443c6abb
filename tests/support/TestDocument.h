#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"
#include "workflow/RulesDocument.h"

#include <string>

namespace quorvane::test {

// The folder for the journals of a test's document; created before it and removed after it.
struct TestStateFolder {
    TemporaryFolder folderOfState;
};

// A document with separate journals, or in a given folder, which does everything synchronously.
class TestDocument : private TestStateFolder, public workflow::RulesDocument {
public:
    TestDocument(rules::RuleManager& store, workflow::RunState& run, platform::Log& log = silentLog(),
        const std::string& folder = {})
        : workflow::RulesDocument(store, run,
            {.program = "test", .stateFolder = folder.empty() ? folderOfState.path() : folder}, log)
    {
    }
};

} // namespace quorvane::test
