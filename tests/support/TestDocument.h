#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"
#include "workflow/RulesDocument.h"

#include <string>

namespace quorvane {

// Where a document of a test keeps its journals; made before it and gone after it.
struct TestStateFolder {
    TemporaryFolder folderOfState;
};

// A document with journals of its own, or in a given folder, which does everything at once.
class TestDocument : private TestStateFolder, public RulesDocument {
public:
    TestDocument(RuleManager& store, RunState& run, Log& log = silentLog(), const std::string& folder = {})
        : RulesDocument(store, run,
            {.program = "test", .stateFolder = folder.empty() ? folderOfState.path() : folder}, log)
    {
    }
};

} // namespace quorvane
