#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <cstddef>
#include <memory>

namespace quorvane::cli {

struct CommandContext;

// The current user's rules, opened for changes. Reports of the document go to standard error. One thread.
class UserDocument : private workflow::DocumentObserver {
public:
    // `opened` must be read from the user's configuration, and outlive it.
    UserDocument(rules::RuleManager& opened, const CommandContext& context);

    rules::RuleManager& store() { return m_store; }
    workflow::RulesDocument& document() { return m_document; }

    // True when the file contains the rules; else prints why it does not.
    bool isWritten() const;

    // How lines are written.
    rules::LineEnds lineEnds() const;

    // The next write prints an error about rules that do not read back unchanged only if there are more than
    // this number, which the command has reported already.
    void expectUnwritableRules(std::size_t count) { m_expectedUnwritable = count; }

private:
    static workflow::DocumentOwner owner(const CommandContext& context);
    void rulesWereMerged(const rules::ChangeSet& /*change*/) override { }
    void rulesWereReloaded() override { }
    void fileStateDidChange() override { }
    void documentHasNews(const workflow::DocumentNews& news) override;

    workflow::RunState m_run;
    std::size_t m_expectedUnwritable = 0;
    rules::RuleManager& m_store;
    workflow::RulesDocument m_document;
};

// The current user's intended rules, to preview a change. Null, with an error printed, when not all of them
// could be read.
std::unique_ptr<UserDocument> openToLook(const CommandContext& context);

// The same for changing them: completes an interrupted write first.
std::unique_ptr<UserDocument> openForWriting(const CommandContext& context);

// The same for undoing and redoing, also where the file cannot be read since our own write has cut it within
// a letter.
std::unique_ptr<UserDocument> openToUndo(const CommandContext& context);

// The same for restoring an earlier version, whatever the file contains now: one that could not be read
// completely is renamed. Never null.
std::unique_ptr<UserDocument> openToRestore(const CommandContext& context);

} // namespace quorvane::cli
