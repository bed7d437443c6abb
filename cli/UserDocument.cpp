#include "cli/UserDocument.h"

#include "cli/Command.h"
#include "cli/Output.h"
#include "cli/RuleSelection.h"

namespace quorvane::cli {

UserDocument::UserDocument(rules::RuleManager& opened, const CommandContext& context)
    : m_store(opened)
    , m_document(m_store, m_run, owner(context), context.log)
{
    m_document.setObserver(this);
}

workflow::DocumentOwner UserDocument::owner(const CommandContext& context)
{
    const workflow::ReadProgramSettings read = workflow::readProgramSettings(workflow::defaultSettingsFile());
    if (read.problem)
        printError(*read.problem);
    return {.program = "quorvanectl",
        .stateFolder = history::defaultStateFolder(),
        .settings = read.settings,
        .lockTimeout = context.lockTimeout,
        .undoRefusesCuts = true};
}

void UserDocument::documentHasNews(const workflow::DocumentNews& news)
{
    using Kind = workflow::DocumentNews::Kind;
    const bool isOfUnwritable = news.kind == Kind::cutShort || news.kind == Kind::unwritable;
    if (!isOfUnwritable || news.rules.size() > m_expectedUnwritable)
        printError(news.text);
}

bool UserDocument::isWritten() const
{
    if (m_document.failure())
        printError(*m_document.failure());
    return !m_document.failure();
}

rules::LineEnds UserDocument::lineEnds() const
{
    return m_document.settings().lineEnds();
}

namespace {

constexpr const char* wouldLoseRules = "nothing was written: it would lose the rules that were not read";

} // namespace

std::unique_ptr<UserDocument> openToLook(const CommandContext& context)
{
    const OpenedStore opened = openStore({}, context);
    if (opened.isComplete)
        return std::make_unique<UserDocument>(opened.store, context);
    printError(wouldLoseRules);
    return nullptr;
}

std::unique_ptr<UserDocument> openForWriting(const CommandContext& context)
{
    auto user = openToLook(context);
    if (user)
        user->document().recover();
    return user;
}

std::unique_ptr<UserDocument> openToUndo(const CommandContext& context)
{
    const OpenedStore opened = openStore({}, context);
    auto user = std::make_unique<UserDocument>(opened.store, context);
    if (!opened.isComplete && !user->document().isFileAsWeLeftIt()) {
        printError(wouldLoseRules);
        return nullptr;
    }
    user->document().recover();
    return user;
}

std::unique_ptr<UserDocument> openToRestore(const CommandContext& context)
{
    auto user = std::make_unique<UserDocument>(openStore({}, context).store, context);
    user->document().recover();
    return user;
}

} // namespace quorvane::cli
