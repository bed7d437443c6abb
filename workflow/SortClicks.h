#pragma once

#include "rules/RuleSort.h"

#include <vector>

namespace quorvane::workflow {

// The sort order after a click on the title of the column that sorts by `key`: it becomes the primary key,
// ascending, and what was sorted by before breaks ties. A click on the primary key's column turns its
// direction round.
std::vector<rules::SortDescriptor> sortDescriptorsAfterClick(
    std::vector<rules::SortDescriptor> descriptors, rules::SortKey key);

} // namespace quorvane::workflow
