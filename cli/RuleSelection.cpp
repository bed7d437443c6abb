#include "cli/RuleSelection.h"

#include "cli/Output.h"
#include "rules/RulesFile.h"

#include <sys/stat.h>

namespace quorvane {

namespace {

// Why rules of the selection's file are not in the store; none when all are.
std::optional<std::string> whyIncomplete(const RuleSelection& selection, const Locations& locations)
{
    struct stat status { };
    if (selection.file && stat(selection.file->c_str(), &status) != 0)
        return "There is no file '" + *selection.file + "'";
    return reasonRulesAreUnread(selection.file.value_or(locations.userRulesFile()));
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
    const auto reason = whyIncomplete(selection, locations);
    if (message)
        complain(*message);
    if (reason && reason != message)
        complain(*reason);
    opened.hasFailed = message.has_value();
    opened.isComplete = !message && !reason;
    opened.store->applyFilterWithString(selection.filter);
    opened.store->sortIndexUsingDescriptors(selection.sort);
    return opened;
}

} // namespace quorvane
