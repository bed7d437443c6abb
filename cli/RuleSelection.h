#pragma once

#include "rules/RuleManager.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quorvane {

// Which store a command asks, and which of its rows in which order.
struct RuleSelection {
    std::optional<std::string> file; // none for the current user's configuration
    bool labelAsSystem = false; // of `file`
    bool includeSystemRules = false;
    std::string filter{};
    std::vector<SortDescriptor> sort{};
};

// A store, and how well it could be read.
struct OpenedStore {
    std::unique_ptr<RuleManager> store;
    bool hasFailed = false; // to read a file; a named one that is missing included
    // All rules of the selected rules file are in the store. A named file must exist for this, and hold
    // nothing but text; to the store both are no failure.
    bool isComplete = true;
};

// Reads the store that `selection` names, filtered and sorted, and complains of what could not be read.
OpenedStore openStore(const RuleSelection& selection, const Locations& locations, Log& log);

// The current user's rules, to be changed. What the document reports goes to standard error.
struct UserDocument : private DocumentObserver {
    UserDocument(std::unique_ptr<RuleManager> opened, Log& log);

    // The exit status of a command that has changed rules; complains of what could not be written.
    int status() const;

    RunState run;
    std::unique_ptr<RuleManager> store;
    RulesDocument document;

private:
    static DocumentOwner owner();
    void rulesWereMerged(const ChangeSet& /*change*/) override { }
    void rulesWereReloaded() override { }
    void fileStateDidChange() override { }
    void documentHasNews(const DocumentNews& news) override;
};

// The current user's rules, or null, after a complaint, when writing them back would lose what the file
// holds.
std::unique_ptr<UserDocument> openForWriting(const Locations& locations, Log& log);

} // namespace quorvane
