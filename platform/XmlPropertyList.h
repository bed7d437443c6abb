#pragma once

#include "platform/PropertyValue.h"

#include <optional>
#include <string_view>

namespace quorvane::platform {

// Reads the XML form, which must be UTF-8 without a byte order mark. For readPropertyList(), which documents
// limits and failures.
std::optional<PropertyValue> readXmlPropertyList(std::string_view text);

} // namespace quorvane::platform
