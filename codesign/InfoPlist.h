#pragma once

#include "codesign/ByteView.h"

#include <optional>
#include <string>

namespace quorvane::codesign {

// What an Info.plist says of its bundle.
struct InfoPlist {
    std::optional<std::string> executable; // a plain file name
};

// Reads an XML or binary Info.plist. None when it is damaged or names an executable that is no plain file
// name.
std::optional<InfoPlist> parseInfoPlist(ByteView bytes);

} // namespace quorvane::codesign
