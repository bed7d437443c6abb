#pragma once

#include "rules/NullableText.h"

#include <string>

#include <nlohmann/json.hpp>

namespace quorvane::cli {

// Prints the keys of an object in insertion order.
using Json = nlohmann::ordered_json;

inline Json jsonText(const rules::NullableText& text)
{
    return text.isNull() ? Json(nullptr) : Json(std::string(text.view()));
}

} // namespace quorvane::cli
