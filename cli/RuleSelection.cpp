#include "cli/RuleSelection.h"

#include "cli/Output.h"

#include <sys/stat.h>

namespace quorvane {

OpenedStore openStore(const RuleSelection& selection, const Locations& locations, Log& log)
{
    OpenedStore opened;
    if (selection.file) {
        opened.store
            = RuleManager::initWithContentsOfFile(*selection.file, selection.labelAsSystem, locations, log);
        struct stat status { };
        opened.fileExists = stat(selection.file->c_str(), &status) == 0;
        if (!opened.fileExists)
            complain("no file '" + *selection.file + "': there are no rules to read");
    } else {
        opened.store = RuleManager::initWithCurrentUserConfiguration(locations, log);
    }
    if (const auto& message = opened.store->lastErrorMessage()) {
        complain(*message);
        opened.isComplete = false;
    }
    opened.store->applyFilterWithString(selection.filter);
    opened.store->sortIndexUsingDescriptors(selection.sort);
    return opened;
}

} // namespace quorvane
