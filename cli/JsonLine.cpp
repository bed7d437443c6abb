#include "cli/JsonLine.h"

#include "cli/JsonText.h"

#include <algorithm>
#include <utility>

namespace quorvane::cli {

namespace {

bool isPlain(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= 0x20 && byte < 0x80 && letter != '"' && letter != '\\';
}

} // namespace

void JsonLine::addKey(std::string_view key)
{
    m_line.append(m_line.size() == 1 ? "\"" : ",\"").append(key).append("\":");
}

// Texts that need escapes, or have non-ASCII characters to be checked, are left to the library.
void JsonLine::add(std::string_view key, std::string_view text)
{
    addKey(key);
    if (std::all_of(text.begin(), text.end(), isPlain))
        m_line.append("\"").append(text).append("\"");
    else
        m_line += Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

void JsonLine::add(std::string_view key, const rules::NullableText& text)
{
    if (text.isNull())
        add(key, nullptr);
    else
        add(key, text.view());
}

void JsonLine::add(std::string_view key, std::nullptr_t)
{
    addKey(key);
    m_line += "null";
}

void JsonLine::add(std::string_view key, bool value)
{
    addKey(key);
    m_line += value ? "true" : "false";
}

std::string JsonLine::finish()
{
    m_line += "}\n";
    return std::move(m_line);
}

} // namespace quorvane::cli
