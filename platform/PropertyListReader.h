#pragma once

#include "platform/PropertyListBounds.h"
#include "platform/PropertyValue.h"

#include <optional>
#include <string_view>

namespace quorvane::platform {

// Reads a property list from a foreign file: XML (UTF-8, and UTF-16 with a byte order mark) or binary, not
// the old text form. The last value of a repeated key counts.
//
// Written here because the common libraries react to some hostile lists with a stack overflow, quadratic time
// or memory exhaustion. Takes linear time, and some 200 MB at most. None for a list that is damaged, not
// Unicode, larger than largestPropertyList, nests deeper than 512 or holds more than two million values, and
// for an XML list that declares entities. Values of a binary list are counted once for every reference;
// containers may not be shared or contain themselves, which ordinary writers never produce. Any thread.
std::optional<PropertyValue> readPropertyList(std::string_view bytes);

} // namespace quorvane::platform
