#include "codesign/XmlPropertyList.h"

#include "codesign/XmlText.h"

#include <algorithm>
#include <utility>

namespace quorvane {

namespace {

constexpr int deepestNesting = 32;
constexpr std::size_t mostValues = 1U << 20U;

struct Tag {
    std::string_view name; // with "/" in front when it closes an element
    bool empty = false; // closes itself
};

class Reader {
public:
    explicit Reader(std::string_view text)
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

    void skipBlanks()
    {
        const std::size_t at = m_rest.find_first_not_of(" \t\r\n");
        m_rest.remove_prefix(std::min(at, m_rest.size()));
    }

    // Skips what stands between elements; false when it does not end.
    bool skipRemarks()
    {
        for (;;) {
            skipBlanks();
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
        return Tag{inside.substr(0, inside.find_first_of(" \t\r\n")), empty};
    }

    bool closes(std::string_view name)
    {
        const auto tag = nextTag();
        return tag && tag->name.starts_with("/") && tag->name.substr(1) == name;
    }

    // The text up to the end of the element that was just opened.
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
        if (++m_values > mostValues || depth > deepestNesting)
            return false;
        if (tag.name == "dict" || tag.name == "array")
            return container(tag, out, depth);
        if (tag.name == "true" || tag.name == "false") {
            out.kind = PropertyValue::Kind::boolean;
            out.flag = tag.name == "true";
            return tag.empty || closes(tag.name);
        }
        auto text = content(tag);
        if (!text)
            return false;
        out.text = std::move(*text);
        if (tag.name == "string") {
            out.kind = PropertyValue::Kind::string;
            return true;
        }
        if (tag.name == "data") {
            out.kind = PropertyValue::Kind::data;
            return decodeBase64(out.text);
        }
        return tag.name == "integer" || tag.name == "real" || tag.name == "date";
    }

    bool container(const Tag& tag, PropertyValue& out, int depth)
    {
        const bool dictionary = tag.name == "dict";
        out.kind = dictionary ? PropertyValue::Kind::dictionary : PropertyValue::Kind::array;
        if (tag.empty)
            return true;
        for (;;) {
            auto next = nextTag();
            if (!next)
                return false;
            if (next->name.starts_with("/"))
                return next->name.substr(1) == tag.name;
            if (dictionary && !(next = afterKey(*next, out)))
                return false;
            if (!value(*next, out.items.emplace_back(), depth + 1))
                return false;
        }
    }

    // Takes a key that was just opened; the tag of its value.
    std::optional<Tag> afterKey(const Tag& tag, PropertyValue& dictionary)
    {
        auto key = tag.name == "key" ? content(tag) : std::nullopt;
        if (!key)
            return std::nullopt;
        dictionary.keys.push_back(std::move(*key));
        return nextTag();
    }

    std::string_view m_rest;
    std::size_t m_values = 0;
};

} // namespace

const PropertyValue* PropertyValue::find(std::string_view key) const
{
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? nullptr : &items[static_cast<std::size_t>(found - keys.begin())];
}

std::optional<PropertyValue> parseXmlPropertyList(ByteView bytes)
{
    std::string_view text = bytes.text();
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    return Reader(text).document();
}

} // namespace quorvane
