#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

// Takes the text of an element from the front of `rest`, up to the next tag: the five predefined entities and
// numbered characters are replaced, literal sections are taken as they are. None for any other entity or an
// end inside the text.
std::optional<std::string> takeXmlText(std::string_view& rest);

// Replaces Base64 text, with blanks anywhere, by the bytes it stands for. False for any other character.
bool decodeBase64(std::string& text);

} // namespace quorvane
