#pragma once

#include "platform/Locations.h"
#include "platform/Log.h"
#include "rules/RuleManager.h"
#include "windows/BackgroundThread.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <functional>
#include <memory>
#include <string>

namespace quorvane::bench {

// A user whose rules are a copy of `file`, with a journal and a thread that writes, below `folder`, which is
// made when it is missing.
class User {
public:
    // Loads the rules, as the program does on another thread.
    User(const std::string& file, std::string folder);

    const platform::Locations& locations() const { return m_locations; }
    std::string stateFolder() const { return m_folder + "/state"; }
    platform::Log& log() { return m_log; }
    workflow::RunState& run() { return m_run; }
    windows::BackgroundThread& background() { return m_background; }
    rules::RuleManager& store() { return *m_store; }
    // Made at the first call.
    workflow::RulesDocument& document();

private:
    const std::string m_folder;
    const platform::Locations m_locations{m_folder, "bench"};
    platform::Log m_log{{}};
    workflow::RunState m_run;
    windows::BackgroundThread m_background;
    std::unique_ptr<rules::RuleManager> m_store;
    std::unique_ptr<workflow::RulesDocument> m_document;
};

// The main function of a program `name` FILE whose windows nobody sees: calls `print` with FILE and a folder
// beside it, which is removed afterwards. Returns the exit status.
int runWindowBench(const char* name, int argumentCount, char** arguments,
    const std::function<void(const std::string& file, const std::string& folder)>& print);

} // namespace quorvane::bench
