#pragma once

#include "codesign/ByteView.h"

#include <optional>
#include <string>

namespace quorvane::codesign {

// The used contents of an Info.plist.
struct InfoPlist {
    std::optional<std::string> executable; // a plain file name
};

// Reads an XML or binary Info.plist. None when it is damaged or its executable is not a plain file name. Any
// thread.
std::optional<InfoPlist> parseInfoPlist(ByteView bytes);

} // namespace quorvane::codesign
