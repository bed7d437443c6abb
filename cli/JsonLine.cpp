#include "cli/JsonLine.h"

#include "cli/EveryByte.h"
#include "cli/JsonText.h"

namespace quorvane::cli {

namespace {

bool needsNoEscape(std::string_view text)
{
    return everyByte(
        text, [](unsigned char byte) { return byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\'; });
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
