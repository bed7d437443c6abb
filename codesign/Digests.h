#pragma once

#include "platform/FileRoot.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::codesign {

// Digests as lowercase hexadecimal digits: 40 for SHA-1, 64 for SHA-256. Any thread.

std::string sha1(std::string_view buffer);
std::string sha256(std::string_view buffer);

// The digest of a whole file within `root`, read in bounded chunks. None when it cannot be read to its end or
// is not a regular file.
std::optional<std::string> sha1OfFile(const std::string& path, const platform::FileRoot& root = {});
std::optional<std::string> sha256OfFile(const std::string& path, const platform::FileRoot& root = {});

// Both of them, reading the file once.
struct FileDigests {
    std::string sha1;
    std::string sha256;
};
std::optional<FileDigests> digestsOfFile(const std::string& path);

} // namespace quorvane::codesign
