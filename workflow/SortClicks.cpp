#include "workflow/SortClicks.h"

namespace quorvane {

std::vector<SortDescriptor> sortDescriptorsAfterClick(std::vector<SortDescriptor> descriptors, SortKey key)
{
    if (!descriptors.empty() && descriptors.front().key == key) {
        descriptors.front().ascending = !descriptors.front().ascending;
        return descriptors;
    }
    std::erase_if(descriptors, [key](const SortDescriptor& descriptor) { return descriptor.key == key; });
    descriptors.insert(descriptors.begin(), {key, true});
    return descriptors;
}

} // namespace quorvane
