#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::history {

// The largest contents that are packed; a frame of them fits into one value of the database.
constexpr std::size_t largestContents = 900'000'000; // bytes

// Packs `contents` against `prefix`, which should be similar contents; an empty prefix makes a self-contained
// frame. Throws std::bad_alloc. Any thread.
//
// The common start and end are not packed, only their lengths are stored: for a long file with one changed
// line that is nearly everything, and it costs a comparison instead of a search for matches.
std::string packedFrame(std::string_view contents, std::string_view prefix);

// The contents of a frame that was packed against the same prefix. `size` is their expected number of bytes.
// None for a frame that cannot be unpacked or has another size; never produces more than `size` bytes. Does
// not detect a wrong prefix or altered lengths, which may yield other contents: check a digest. Any thread.
std::optional<std::string> unpackedFrame(std::string_view frame, std::string_view prefix, std::size_t size);

} // namespace quorvane::history
