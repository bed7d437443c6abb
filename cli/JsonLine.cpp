#include "cli/JsonLine.h"

#include "cli/JsonText.h"

namespace quorvane::cli {

namespace {

// True for text that needs no escapes. Checks all bytes without an early exit, so that the compiler can
// vectorize the loop.
bool needsNoEscape(std::string_view text)
{
    unsigned char anyOdd = 0;
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(letter);
        anyOdd |= static_cast<unsigned char>(byte < 0x20 || byte >= 0x80 || letter == '"' || letter == '\\');
    }
    return anyOdd == 0;
}

} // namespace

// Texts that need escapes, or have non-ASCII characters to be checked, are left to the library.
void JsonLine::add(const JsonKey& key, std::string_view text)
{
    m_out.append(key.written());
    if (needsNoEscape(text))
        m_out.append("\"").append(text).append("\"");
    else
        m_out += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void JsonLine::add(const JsonKey& key, const rules::NullableText& text)
{
    if (text.isNull())
        add(key, nullptr);
    else
        add(key, text.view());
}

} // namespace quorvane::cli
