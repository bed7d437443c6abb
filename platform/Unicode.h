#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Unicode questions about UTF-8 text. All functions are pure and safe from any thread.
// Text that is not valid UTF-8 is never rejected here (but by isValidUtf8): ill-formed bytes count as U+FFFD.

namespace quorvane {

// True when `text` is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(std::string_view text);

// The length of `text` in UTF-16 code units.
std::size_t utf16Length(std::string_view text);

// Appends the key of the ordinal case-insensitive order to `out`: Unicode's full case folding of `text`. Keys
// compare by bytes, which for UTF-8 is the order of code points; no locale takes part.
void appendFoldedCase(std::string& out, std::string_view text);
std::string foldedCase(std::string_view text);

// Appends the key of the locale-aware case-insensitive search to `out`: case folded by the rules of the
// process' locale and canonically composed. A text contains another exactly when its key contains the
// other's key.
void appendSearchKey(std::string& out, std::string_view text);
std::string searchKey(std::string_view text);

// The UTF-8 text that `bytes` spell when read as Mac OS Roman.
std::string textFromMacRoman(std::string_view bytes);

} // namespace quorvane
