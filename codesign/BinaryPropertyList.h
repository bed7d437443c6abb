#pragma once

#include "codesign/ByteView.h"

#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

bool isBinaryPropertyList(ByteView bytes);

// Looks a text up in the root dictionary of a binary property list; `text` becomes none when the key is
// missing or has another kind of value. False, when the list is damaged or its root is no dictionary.
//
// Follows one reference from the root and never one from there, so that lists that refer to themselves or
// grow without bounds when unfolded do no harm.
bool readTextFromBinaryPropertyList(ByteView bytes, std::string_view key, std::optional<std::string>& text);

} // namespace quorvane
