#pragma once

#include "rules/RuleRows.h"

#include <memory>
#include <vector>

namespace quorvane::rules {

// Rows of exactly these rules, in this order; for the thread that owns the store. Throws std::bad_alloc.
std::shared_ptr<const RuleRows> listedRows(const std::vector<RuleRef>& rules);

} // namespace quorvane::rules
