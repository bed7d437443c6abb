#pragma once

#include "rules/RuleLine.h"
#include "rules/RuleManager.h"
#include "workflow/RulesDocument.h"
#include "workflow/RunState.h"

#include <cstddef>
#include <memory>

namespace quorvane::cli {

struct CommandContext;

// The current user's rules, to be changed. What the document reports goes to standard error.
class UserDocument : private workflow::DocumentObserver {
public:
    // `opened` has been read from the user's configuration.
    UserDocument(std::unique_ptr<rules::RuleManager> opened, const CommandContext& context);

    rules::RuleManager& store() { return *m_store; }
    workflow::RulesDocument& document() { return m_document; }

    // True when the file holds the rules; else complains of why it does not.
    bool isWritten() const;

    // How much of every line is written.
    rules::LineEnds lineEnds() const;

    // The next write will printError of rules that do not come back from the file as they are when there are
    // more of them than this number, which the command has complained of.
    void expectUnwritableRules(std::size_t count) { m_expectedUnwritable = count; }

private:
    static workflow::DocumentOwner owner(const CommandContext& context);
    void rulesWereMerged(const rules::ChangeSet& /*change*/) override { }
    void rulesWereReloaded() override { }
    void fileStateDidChange() override { }
    void documentHasNews(const workflow::DocumentNews& news) override;

    workflow::RunState m_run;
    std::size_t m_expectedUnwritable = 0;
    std::unique_ptr<rules::RuleManager> m_store;
    workflow::RulesDocument m_document;
};

// The current user's rules as they were meant, to see what a change of them would come to. Null, after a
// complaint, when not all of them could be read.
std::unique_ptr<UserDocument> openToLook(const CommandContext& context);

// The same to change them: a write that was cut short is completed first.
std::unique_ptr<UserDocument> openForWriting(const CommandContext& context);

// The same to bring an earlier version back, whatever the file holds now: one of which not everything could
// be read is kept under another name. Never null.
std::unique_ptr<UserDocument> openToRestore(const CommandContext& context);

} // namespace quorvane::cli
