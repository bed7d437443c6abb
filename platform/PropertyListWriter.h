#pragma once

#include "platform/PropertyValue.h"

#include <cstddef>
#include <optional>
#include <string>

namespace quorvane::platform {

// The bytes of a property list file, at most `largest` of them, written in nearly linear time. Written here
// because the common libraries take quadratic time for large lists and write control characters unescaped.
// Require lists that nest no deeper than readPropertyList() reads. Any thread.

// None when that is not enough, and for a list that XML cannot represent: with a control character in a text,
// or a date outside the years 1 to 9999. A date loses its fraction of a second.
std::optional<std::string> xmlPropertyList(const PropertyValue& root, std::size_t largest);

// Equal texts are written once. None when `largest` is not enough.
std::optional<std::string> binaryPropertyList(const PropertyValue& root, std::size_t largest);

} // namespace quorvane::platform
