#include "cli/RuleSelection.h"

#include "cli/Output.h"

#include <cerrno>
#include <cstring>

#include <utility>

#include <sys/stat.h>

namespace quorvane {

namespace {

// Why the file that the selection names cannot be there to be read. The store takes such a file for one
// without rules.
std::optional<std::string> whyMissing(const RuleSelection& selection)
{
    struct stat status { };
    if (!selection.file || stat(selection.file->c_str(), &status) == 0)
        return std::nullopt;
    return errno == ENOENT ? "There is no file '" + *selection.file + "'"
                           : "Cannot find the file '" + *selection.file + "': " + std::strerror(errno);
}

// Why rules of the selection's file are not in the store; none when all are.
std::optional<std::string> whyIncomplete(const RuleSelection& selection, const RuleManager& store)
{
    struct stat status { };
    if (selection.file && stat(selection.file->c_str(), &status) == 0 && S_ISFIFO(status.st_mode))
        return "'" + *selection.file + "' is a pipe: nothing of it is read";
    const auto& unread = store.unreadRules();
    return unread ? std::optional(unread->reason) : std::nullopt;
}

} // namespace

OpenedStore openStore(const RuleSelection& selection, const Locations& locations, Log& log)
{
    OpenedStore opened;
    if (selection.file)
        opened.store
            = RuleManager::initWithContentsOfFile(*selection.file, selection.labelAsSystem, locations, log);
    else
        opened.store = RuleManager::initWithCurrentUserConfiguration(locations, log);
    const auto& message = opened.store->lastErrorMessage();
    const auto missing = whyMissing(selection);
    const auto reason = missing ? missing : whyIncomplete(selection, *opened.store);
    if (message)
        complain(*message);
    if (reason && reason != message)
        complain(*reason);
    const auto& unread = opened.store->unreadRules();
    opened.hasFailed = message || missing || (unread && unread->isFailure);
    opened.isComplete = !reason;
    opened.store->applyFilterWithString(selection.filter);
    opened.store->sortIndexUsingDescriptors(selection.sort);
    return opened;
}

UserDocument::UserDocument(std::unique_ptr<RuleManager> opened, Log& log)
    : store(std::move(opened))
    , document(*store, run, owner(), log)
{
    document.setObserver(this);
}

DocumentOwner UserDocument::owner()
{
    const ReadProgramSettings read = readProgramSettings(defaultSettingsFile());
    if (read.problem)
        complain(*read.problem);
    return {.program = "quorvanectl", .stateFolder = defaultStateFolder(), .settings = read.settings};
}

void UserDocument::documentHasNews(const DocumentNews& news)
{
    if (news.kind
        != DocumentNews::Kind::cutShort) // commands say which of the rules given to them do not survive
        complain(news.text);
}

int UserDocument::status() const
{
    if (!document.failure())
        return 0;
    complain(*document.failure());
    return 1;
}

std::unique_ptr<UserDocument> openForWriting(const Locations& locations, Log& log)
{
    OpenedStore opened = openStore({}, locations, log);
    if (opened.isComplete)
        return std::make_unique<UserDocument>(std::move(opened.store), log);
    complain("nothing was written: it would lose the rules that were not read");
    return nullptr;
}

} // namespace quorvane
