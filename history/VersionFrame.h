#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::history {

// The largest contents that are packed; a frame of them fits into one value of the data base.
constexpr std::size_t largestContents = 900'000'000; // bytes

// Packs `contents` against `prefix`, contents much like them; an empty prefix makes a frame that stands
// alone. Throws std::bad_alloc. Any thread.
//
// What both begin and end with is not packed, only its length is kept: of a long file in which one line has
// changed that is nearly all, and it costs a comparison in place of a search for matches.
std::string packedFrame(std::string_view contents, std::string_view prefix);

// The contents of a frame that was packed against the same prefix. `size` is the number of bytes they must
// have. None for a frame that cannot be unpacked or is of another size; no more than `size` bytes are ever
// made. Whether frame and prefix are sound is told by their digests alone: another prefix, or other lengths
// in a frame, may give other contents. Any thread.
std::optional<std::string> unpackedFrame(std::string_view frame, std::string_view prefix, std::size_t size);

} // namespace quorvane::history
