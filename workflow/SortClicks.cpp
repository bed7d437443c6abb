#include "workflow/SortClicks.h"

namespace quorvane::workflow {

std::vector<rules::SortDescriptor> sortDescriptorsAfterClick(
    std::vector<rules::SortDescriptor> descriptors, rules::SortKey key)
{
    if (!descriptors.empty() && descriptors.front().key == key) {
        descriptors.front().ascending = !descriptors.front().ascending;
        return descriptors;
    }
    std::erase_if(
        descriptors, [key](const rules::SortDescriptor& descriptor) { return descriptor.key == key; });
    descriptors.insert(descriptors.begin(), {key, true});
    return descriptors;
}

} // namespace quorvane::workflow
