#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvane::platform {

// The absolute path that a "file:" URI of this computer names, byte for byte as the file system has it. None
// for other URIs, those of another host included, and for a path that no file can have (with a null byte).
// Any thread.
std::optional<std::string> pathOfFileUri(std::string_view uri);

} // namespace quorvane::platform
