#pragma once

#include <string>
#include <string_view>

namespace quorvane::history {

// The SHA-256 of `bytes` as 64 lowercase hexadecimal digits. Any thread.
std::string contentDigest(std::string_view bytes);

} // namespace quorvane::history
