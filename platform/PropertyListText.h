#pragma once

#include "platform/PropertyValue.h"

#include <string>

namespace quorvane::platform {

// The value in one line, for logs: {"key" = 1; "list" = ("a", <01ff>)}. A boolean is 1 or 0, a date is shown
// in seconds since 2001. "..." replaces containers nested deeper than 64 levels, and everything after 64 KiB.
// Pure.
std::string propertyListText(const PropertyValue& value);

} // namespace quorvane::platform
