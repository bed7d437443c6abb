#include "platform/XmlText.h"

#include "platform/Unicode.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>

namespace quorvane::platform {

namespace {

constexpr std::string_view literalStart = "<![CDATA[";
constexpr std::string_view literalEnd = "]]>";
constexpr std::size_t longestEntity = 12;
constexpr std::string_view base64Digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

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
    appendCodePoint(out, codePoint);
    return true;
}

// Appends the character that "&name;" denotes.
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

constexpr std::uint8_t noDigit = 64;

constexpr std::array<std::uint8_t, 256> valuesOfBase64Digits()
{
    std::array<std::uint8_t, 256> values{};
    values.fill(noDigit);
    for (std::size_t i = 0; i < base64Digits.size(); ++i)
        values[static_cast<unsigned char>(base64Digits[i])] = static_cast<std::uint8_t>(i);
    return values;
}

// The start of 2001, from which property lists count.
constexpr std::chrono::sys_seconds epoch = std::chrono::sys_days(std::chrono::year(2001) / 1 / 1);

// The number in the `length` characters at `at`; none when one of them is no digit.
std::optional<unsigned> digitsAt(std::string_view text, std::size_t at, std::size_t length)
{
    unsigned number = 0;
    for (const char digit : text.substr(at, length)) {
        if (digit < '0' || digit > '9')
            return std::nullopt;
        number = number * 10 + static_cast<unsigned>(digit - '0');
    }
    return number;
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

bool appendXmlText(std::string& out, std::string_view text)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else if (c == '\r')
            out += "&#13;"; // readers turn a bare one into a line feed
        else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n')
            return false;
        else
            out += c;
    }
    return text.find("\xEF\xBF\xBE") == std::string_view::npos
        && text.find("\xEF\xBF\xBF") == std::string_view::npos;
}

std::optional<std::string> bytesOfBase64(std::string_view text)
{
    static constexpr auto values = valuesOfBase64Digits();
    std::string bytes;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char character : text) {
        if (character == ' ' || character == '\t' || character == '\r' || character == '\n'
            || character == '=')
            continue;
        const std::uint8_t value = values[static_cast<unsigned char>(character)];
        if (value == noDigit)
            return std::nullopt;
        bits = bits << 6U | value;
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xffU);
        }
    }
    return bytes;
}

void appendBase64(std::string& out, std::string_view bytes)
{
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8U | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        for (std::size_t digit = 0; digit < 4; ++digit)
            out += digit <= group.size() ? base64Digits[bits >> (18 - 6 * digit) & 0x3fU] : '=';
    }
}

std::optional<double> secondsOfXmlDate(std::string_view text)
{
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    if (text.size() != form.size())
        return std::nullopt;
    for (std::size_t at = 0; at < form.size(); ++at) {
        if (form[at] != '0' && text[at] != form[at])
            return std::nullopt;
    }
    const auto year = digitsAt(text, 0, 4);
    const auto month = digitsAt(text, 5, 2);
    const auto day = digitsAt(text, 8, 2);
    const auto hour = digitsAt(text, 11, 2);
    const auto minute = digitsAt(text, 14, 2);
    const auto second = digitsAt(text, 17, 2);
    if (!year || !month || !day || !hour || !minute || !second || *hour > 24 || *minute > 59 || *second > 60)
        return std::nullopt;
    const std::chrono::year_month_day date{
        std::chrono::year(static_cast<int>(*year)), std::chrono::month(*month), std::chrono::day(*day)};
    if (!date.ok())
        return std::nullopt;
    const std::chrono::sys_seconds time = std::chrono::sys_days(date) + std::chrono::hours(*hour)
        + std::chrono::minutes(*minute) + std::chrono::seconds(*second);
    return static_cast<double>((time - epoch).count());
}

std::optional<std::string> xmlDateOf(double seconds)
{
    using std::chrono::floor;
    constexpr double bound = 1e12; // far beyond the years that are written, yet within every type used here
    if (!(std::abs(seconds) < bound))
        return std::nullopt;
    const auto time = epoch + std::chrono::seconds(static_cast<std::int64_t>(std::floor(seconds)));
    const auto day = floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const int year = static_cast<int>(date.year());
    if (year < 1 || year > 9999)
        return std::nullopt;
    const std::chrono::hh_mm_ss clock(time - day);
    std::string text = "0000-00-00T00:00:00Z";
    const auto put = [&text](std::size_t end, std::int64_t number) {
        for (; number > 0; number /= 10)
            text[--end] = static_cast<char>('0' + number % 10);
    };
    put(4, year);
    put(7, static_cast<unsigned>(date.month()));
    put(10, static_cast<unsigned>(date.day()));
    put(13, clock.hours().count());
    put(16, clock.minutes().count());
    put(19, clock.seconds().count());
    return text;
}

} // namespace quorvane::platform
