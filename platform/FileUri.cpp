#include "platform/FileUri.h"

#include <charconv>

namespace quorvane::platform {

namespace {

constexpr std::string_view fileScheme = "file:";
constexpr std::string_view thisHost = "localhost";

// The byte given by two hexadecimal digits.
std::optional<char> byteOf(std::string_view digits)
{
    unsigned char byte = 0;
    const char* const end = digits.data() + digits.size();
    if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end)
        return std::nullopt;
    return static_cast<char>(byte);
}

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        char byte = text[at];
        if (byte == '%') {
            const auto escaped = byteOf(text.substr(at + 1, 2));
            if (!escaped)
                return std::nullopt;
            byte = *escaped;
            at += 2;
        }
        if (byte == '\0')
            return std::nullopt;
        decoded += byte;
    }
    return decoded;
}

} // namespace

std::optional<std::string> pathOfFileUri(std::string_view uri)
{
    if (!uri.starts_with(fileScheme))
        return std::nullopt;
    uri.remove_prefix(fileScheme.size());
    if (uri.starts_with("//")) {
        uri.remove_prefix(2);
        if (uri.starts_with(thisHost))
            uri.remove_prefix(thisHost.size());
    }
    // A remaining host name does not begin with a slash: another host. A query or fragment is no part of the
    // path.
    if (!uri.starts_with('/'))
        return std::nullopt;
    return percentDecoded(uri.substr(0, uri.find_first_of("?#")));
}

} // namespace quorvane::platform
