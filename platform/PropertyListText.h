#pragma once

#include <string>

namespace quorvane {

// The value `node` of the property list library in one line, as logs show it: {"key" = 1; "list" = ("a",
// <01ff>)}. A boolean is 1 or 0, a date is shown in seconds since 2001, a list in lists beyond 64 levels as
// "...".
std::string propertyListText(void* node);

} // namespace quorvane
