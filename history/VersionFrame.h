#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

// The largest contents that are packed; a frame of them fits into one value of the data base.
constexpr std::size_t largestContents = 900'000'000; // bytes

// Packs `contents` against `prefix`, contents much like them; an empty prefix makes a frame that stands
// alone. Throws std::bad_alloc. Any thread.
std::string packedFrame(std::string_view contents, std::string_view prefix);

// The contents of a frame that was packed against the same prefix. `size` is the number of bytes they must
// have. None for a frame that is damaged or of another size; no more than `size` bytes are ever made. Any
// thread.
std::optional<std::string> unpackedFrame(std::string_view frame, std::string_view prefix, std::size_t size);

} // namespace quorvane
