#include "platform/XmlPropertyList.h"

#include "platform/PropertyListBounds.h"
#include "platform/XmlText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

namespace quorvane::platform {

namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view withoutBlanks(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// Decimal, or hexadecimal after 0x; with a sign or without.
std::optional<PropertyValue> integerOf(std::string_view text)
{
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    text = withoutBlanks(text);
    const bool negative = text.starts_with("-");
    if (negative || text.starts_with("+"))
        text.remove_prefix(1);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    if (hexadecimal)
        text.remove_prefix(2);
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, hexadecimal ? 16 : 10);
    if (error != std::errc() || stop != end || (negative && number > largest + 1))
        return std::nullopt;
    if (negative)
        return PropertyValue{number > largest ? smallest : -static_cast<std::int64_t>(number)};
    if (number > largest)
        return PropertyValue{number};
    return PropertyValue{static_cast<std::int64_t>(number)};
}

std::optional<PropertyValue> realOf(std::string_view text)
{
    text = withoutBlanks(text);
    if (text.starts_with("+"))
        text.remove_prefix(1);
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(PropertyValue{number}) : std::nullopt;
}

// XML has no native form for a reference: a dictionary with this single key represents it.
void replaceIfUid(PropertyValue& value)
{
    const auto* dictionary = value.as<PropertyValue::Dictionary>();
    const auto* number = dictionary->size() == 1 ? value.find<std::int64_t>("CF$UID") : nullptr;
    if (number != nullptr && *number >= 0)
        value.value = PropertyValue::Uid{static_cast<std::uint64_t>(*number)};
}

struct Tag {
    std::string_view name; // with "/" in front when it closes an element
    bool empty = false; // closes itself
};

// A single forward pass over the text.
class XmlReader {
public:
    explicit XmlReader(std::string_view text)
        : m_rest(text)
    {
    }

    std::optional<PropertyValue> document()
    {
        auto tag = nextTag();
        const bool wrapped = tag && tag->name == "plist";
        if (wrapped)
            tag = nextTag();
        PropertyValue root;
        if (!tag || !value(*tag, root, 0))
            return std::nullopt;
        if (wrapped && !closes("plist"))
            return std::nullopt;
        return root;
    }

private:
    bool skipPast(std::string_view end)
    {
        const std::size_t at = m_rest.find(end);
        if (at == std::string_view::npos)
            return false;
        m_rest.remove_prefix(at + end.size());
        return true;
    }

    // Skips blanks, comments and instructions between elements; false when one is unterminated.
    bool skipRemarks()
    {
        for (;;) {
            m_rest.remove_prefix(std::min(m_rest.find_first_not_of(blanks), m_rest.size()));
            bool ended = false;
            if (m_rest.starts_with("<!--"))
                ended = skipPast("-->");
            else if (m_rest.starts_with("<?"))
                ended = skipPast("?>");
            else if (m_rest.starts_with("<!DOCTYPE"))
                ended
                    = m_rest.substr(0, m_rest.find('>')).find('[') == std::string_view::npos && skipPast(">");
            else
                return true;
            if (!ended)
                return false;
        }
    }

    std::optional<Tag> nextTag()
    {
        if (!skipRemarks() || !m_rest.starts_with("<"))
            return std::nullopt;
        const std::size_t end = m_rest.find('>');
        if (end == std::string_view::npos)
            return std::nullopt;
        std::string_view inside = m_rest.substr(1, end - 1);
        m_rest.remove_prefix(end + 1);
        const bool empty = inside.ends_with("/");
        if (empty)
            inside.remove_suffix(1);
        return Tag{inside.substr(0, inside.find_first_of(blanks)), empty};
    }

    bool closes(std::string_view name)
    {
        const auto tag = nextTag();
        return tag && tag->name.starts_with("/") && tag->name.substr(1) == name;
    }

    // The text of the element that was just opened.
    std::optional<std::string> content(const Tag& tag)
    {
        if (tag.empty)
            return std::string();
        auto text = takeXmlText(m_rest);
        return text && closes(tag.name) ? std::move(text) : std::nullopt;
    }

    // The value of the element that was just opened.
    bool value(const Tag& tag, PropertyValue& out, int depth)
    {
        if (++m_values > mostPropertyValues || depth > deepestPropertyList)
            return false;
        if (tag.name == "dict")
            return dictionary(tag, out, depth);
        if (tag.name == "array")
            return array(tag, out, depth);
        if (tag.name == "true" || tag.name == "false") {
            out.value = tag.name == "true";
            return tag.empty || closes(tag.name);
        }
        auto text = content(tag);
        auto scalar = text ? scalarOf(tag.name, std::move(*text)) : std::nullopt;
        if (scalar)
            out = std::move(*scalar);
        return scalar.has_value();
    }

    static std::optional<PropertyValue> scalarOf(std::string_view kind, std::string text)
    {
        if (kind == "string")
            return PropertyValue{std::move(text)};
        if (kind == "integer")
            return integerOf(text);
        if (kind == "real")
            return realOf(text);
        if (kind == "data") {
            auto bytes = bytesOfBase64(text);
            return bytes ? std::optional(PropertyValue{PropertyValue::Data{std::move(*bytes)}})
                         : std::nullopt;
        }
        const auto seconds = kind == "date" ? secondsOfXmlDate(withoutBlanks(text)) : std::nullopt;
        return seconds ? std::optional(PropertyValue{PropertyValue::Date{*seconds}}) : std::nullopt;
    }

    bool array(const Tag& tag, PropertyValue& out, int depth)
    {
        auto& items = out.value.emplace<PropertyValue::Array>();
        while (!tag.empty) {
            const auto next = nextTag();
            if (!next)
                return false;
            if (next->name.starts_with("/"))
                return next->name.substr(1) == tag.name;
            if (!value(*next, items.emplace_back(), depth + 1))
                return false;
        }
        return true;
    }

    bool dictionary(const Tag& tag, PropertyValue& out, int depth)
    {
        auto& entries = out.value.emplace<PropertyValue::Dictionary>();
        while (!tag.empty) {
            const auto next = nextTag();
            if (!next)
                return false;
            if (next->name.starts_with("/")) {
                dropRepeatedKeys(entries);
                replaceIfUid(out);
                return next->name.substr(1) == tag.name;
            }
            auto key = next->name == "key" ? content(*next) : std::nullopt;
            const auto opened = key ? nextTag() : std::nullopt;
            if (!opened)
                return false;
            entries.push_back({std::move(*key), {}});
            if (!value(*opened, entries.back().value, depth + 1))
                return false;
        }
        return true;
    }

    std::string_view m_rest;
    std::size_t m_values = 0;
};

} // namespace

std::optional<PropertyValue> readXmlPropertyList(std::string_view text)
{
    return XmlReader(text).document();
}

} // namespace quorvane::platform
