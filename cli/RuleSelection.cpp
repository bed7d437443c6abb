#include "cli/RuleSelection.h"

#include "cli/Command.h"
#include "cli/CommandFiles.h"
#include "cli/Output.h"
#include "workflow/ProgramSettings.h"
#include "workflow/UserRulesFile.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/stat.h>

namespace quorvane::cli {

namespace {

// Why the file that the selection names is not there; none when it is. The store treats a missing file as one
// without rules, and itself reports any other reason for not finding a file.
std::optional<std::string> whyMissing(const RuleSelection& selection)
{
    struct stat status { };
    if (!selection.file || stat(selection.file->c_str(), &status) == 0 || errno != ENOENT)
        return std::nullopt;
    return "there is no file '" + *selection.file + "'";
}

// Why rules of the selection's file are not in the store; none when all are.
std::optional<std::string> whyIncomplete(const RuleSelection& selection, const rules::RuleManager& store)
{
    struct stat status { };
    if (selection.file && stat(selection.file->c_str(), &status) == 0 && S_ISFIFO(status.st_mode))
        return "'" + *selection.file + "' is a pipe: nothing of it is read";
    const auto& unread = store.unreadRules();
    return unread ? std::optional(unread->reason) : std::nullopt;
}

// Never destroyed: the process ends with its command, and freeing a million rules one by one takes a tenth of
// the time that it takes to list them.
rules::RuleManager& kept(std::unique_ptr<rules::RuleManager> store)
{
    static auto& stores = *new std::vector<std::unique_ptr<rules::RuleManager>>;
    return *stores.emplace_back(std::move(store));
}

std::unique_ptr<rules::RuleManager> userStore(const CommandContext& context)
{
    auto store = rules::RuleManager::initWithCurrentUserConfiguration(
        context.locations, context.log, context.lockTimeout);
    workflow::UserRulesFile file(
        context.locations, "quorvanectl", history::defaultStateFolder(), context.log);
    if (const auto meant = file.textUnderWay(context.lockTimeout))
        store->reloadCurrentUserConfiguration(*meant);
    return store;
}

} // namespace

OpenedStore openStore(const RuleSelection& selection, const CommandContext& context)
{
    OpenedStore opened{
        .store = kept(selection.file ? rules::RuleManager::initWithContentsOfFile(*selection.file,
                          selection.labelAsSystem, context.locations, context.log, context.lockTimeout)
                                     : userStore(context))};
    const auto& message = opened.store.lastErrorMessage();
    const auto missing = whyMissing(selection);
    const auto reason = missing ? missing : whyIncomplete(selection, opened.store);
    const std::vector<std::string>& failures = opened.store.readFailures();
    for (const std::string& failure : failures)
        printError(failure);
    const auto isReported = [&failures](const std::string& text) {
        return std::find(failures.begin(), failures.end(), text) != failures.end();
    };
    if (message && !isReported(*message))
        printError(*message);
    if (reason && reason != message && !isReported(*reason))
        printError(*reason);
    const auto& unread = opened.store.unreadRules();
    opened.hasFailed = message || missing || !failures.empty() || (unread && unread->isFailure);
    opened.isComplete = !reason;
    opened.store.applyFilterWithString(selection.filter);
    opened.store.sortIndexUsingDescriptors(selection.sort);
    return opened;
}

OpenedStore openInput(const std::string& file, const CommandContext& context)
{
    const auto input = readText(file);
    return {.store = kept(rules::RuleManager::initWithText(
                input ? input->bytes() : std::string_view(), file, context.locations, context.log)),
        .hasFailed = !input,
        .isComplete = input.has_value()};
}

} // namespace quorvane::cli
