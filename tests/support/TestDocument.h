#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"
#include "workflow/RulesDocument.h"

#include <string>

namespace quorvane::test {

// Where a document of a test keeps its journals; made before it and gone after it.
struct TestStateFolder {
    TemporaryFolder folderOfState;
};

// A document with journals of its own, or in a given folder, which does everything at once.
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
