#include "codesign/XmlText.h"

#include <charconv>
#include <cstdint>

namespace quorvane {

namespace {

constexpr std::string_view literalStart = "<![CDATA[";
constexpr std::string_view literalEnd = "]]>";
constexpr std::size_t longestEntity = 12;

void appendUtf8(std::string& out, std::uint32_t codePoint)
{
    const auto append = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
    const auto tail = [&](unsigned shift) { append(0x80U | (codePoint >> shift & 0x3fU)); };
    if (codePoint < 0x80) {
        append(codePoint);
    } else if (codePoint < 0x800) {
        append(0xc0U | codePoint >> 6U);
        tail(0);
    } else if (codePoint < 0x10000) {
        append(0xe0U | codePoint >> 12U);
        tail(6);
        tail(0);
    } else {
        append(0xf0U | codePoint >> 18U);
        tail(12);
        tail(6);
        tail(0);
    }
}

bool appendNumbered(std::string& out, std::string_view digits)
{
    const bool hexadecimal = digits.starts_with("x");
    if (hexadecimal)
        digits.remove_prefix(1);
    std::uint32_t codePoint = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, codePoint, hexadecimal ? 16 : 10);
    const bool surrogate = codePoint >= 0xd800 && codePoint < 0xe000;
    if (error != std::errc() || stop != end || codePoint == 0 || codePoint > 0x10ffff || surrogate)
        return false;
    appendUtf8(out, codePoint);
    return true;
}

// Appends what "&name;" stands for.
bool appendEntity(std::string& out, std::string_view name)
{
    if (name.starts_with("#"))
        return appendNumbered(out, name.substr(1));
    constexpr struct {
        std::string_view name;
        char character;
    } predefined[] = {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
    for (const auto& entity : predefined) {
        if (entity.name == name) {
            out += entity.character;
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<std::string> takeXmlText(std::string_view& rest)
{
    std::string text;
    for (;;) {
        const std::size_t plain = rest.find_first_of("<&");
        if (plain == std::string_view::npos)
            return std::nullopt;
        text += rest.substr(0, plain);
        rest.remove_prefix(plain);
        if (rest.starts_with(literalStart)) {
            const std::size_t end = rest.find(literalEnd);
            if (end == std::string_view::npos)
                return std::nullopt;
            text += rest.substr(literalStart.size(), end - literalStart.size());
            rest.remove_prefix(end + literalEnd.size());
        } else if (rest.starts_with("<")) {
            return text;
        } else {
            const std::size_t end = rest.substr(0, longestEntity).find(';');
            if (end == std::string_view::npos || !appendEntity(text, rest.substr(1, end - 1)))
                return std::nullopt;
            rest.remove_prefix(end + 1);
        }
    }
}

bool decodeBase64(std::string& text)
{
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text) {
        if (std::string_view(" \t\r\n=").find(character) != std::string_view::npos)
            continue;
        const std::size_t value = alphabet.find(character);
        if (value == std::string_view::npos)
            return false;
        bits = bits << 6U | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xffU);
        }
    }
    text = std::move(bytes);
    return true;
}

} // namespace quorvane
