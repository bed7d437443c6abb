#pragma once

#include "platform/PropertyValue.h"

#include <optional>
#include <string_view>

namespace quorvane::platform {

bool isBinaryPropertyList(std::string_view bytes);

// Reads the binary form. For readPropertyList(), which documents limits and failures.
std::optional<PropertyValue> readBinaryPropertyList(std::string_view bytes);

} // namespace quorvane::platform
