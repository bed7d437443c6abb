#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Unicode questions about UTF-8 text. All functions are pure and safe from any thread. Text that is not valid
// UTF-8 is never rejected here (except by isValidUtf8): ill-formed bytes count as U+FFFD.

namespace quorvane::platform {

// True when `text` is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isValidUtf8(std::string_view text);

// Where the last character of `text` begins, which truncation may have left incomplete; the length of a text
// that does not end with a character.
std::size_t startOfLastCharacter(std::string_view text);

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

// Appends the UTF-8 of a code point, which must not be a surrogate or above U+10FFFF.
void appendCodePoint(std::string& out, char32_t codePoint);

// UTF-8 text from UTF-16. None for an odd number of bytes and for an unpaired surrogate.
std::optional<std::string> textFromUtf16(std::string_view bytes, bool littleEndian);

// The text in big-endian UTF-16.
std::string utf16FromText(std::string_view text);

// Mac OS Roman `bytes` as UTF-8 text.
std::string textFromMacRoman(std::string_view bytes);

} // namespace quorvane::platform
