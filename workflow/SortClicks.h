#pragma once

#include "rules/RuleSort.h"

#include <vector>

namespace quorvane::workflow {

// The sort order after a click on the title of the column that sorts by `key`: it becomes the primary key,
// ascending, and the previous keys break ties. A click on the primary key's column reverses its direction.
// Pure.
std::vector<rules::SortDescriptor> sortDescriptorsAfterClick(
    std::vector<rules::SortDescriptor> descriptors, rules::SortKey key);

} // namespace quorvane::workflow
