#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// How XML property lists encode texts, data and dates. Pure functions.

namespace quorvane::platform {

// Takes the text of an element from the front of `rest`, up to the next tag: the five predefined entities and
// numeric character references are replaced, CDATA sections are taken literally. None for any other entity or
// an end inside the text.
std::optional<std::string> takeXmlText(std::string_view& rest);

// Appends UTF-8 text with its markup characters escaped. False when it has a character that XML cannot
// represent: control characters except tabs and line ends, U+FFFE and U+FFFF.
bool appendXmlText(std::string& out, std::string_view text);

// Decodes Base64 text, which may have blanks anywhere. None when it has any other character.
std::optional<std::string> bytesOfBase64(std::string_view text);
void appendBase64(std::string& out, std::string_view bytes);

// A date such as 2020-02-29T12:34:56Z, in seconds since the start of 2001. None for any other text.
std::optional<double> secondsOfXmlDate(std::string_view text);

// The same date as text, without its fraction of a second; none before the year 1 and after 9999.
std::optional<std::string> xmlDateOf(double seconds);

} // namespace quorvane::platform
