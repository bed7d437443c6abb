#pragma once

#include "platform/PropertyValue.h"

#include <string>

namespace quorvane::platform {

// The value in one line, as logs show it: {"key" = 1; "list" = ("a", <01ff>)}. A boolean is 1 or 0, a date is
// shown in seconds since 2001. "..." stands for a list in lists beyond 64 levels, and for what follows 64
// KiB.
std::string propertyListText(const PropertyValue& value);

} // namespace quorvane::platform
