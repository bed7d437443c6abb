#include "platform/PropertyListWriter.h"

#include "platform/XmlText.h"

#include <array>
#include <charconv>
#include <string_view>

namespace quorvane::platform {

namespace {

constexpr std::string_view beginning = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
)";
constexpr std::string_view ending = "</plist>\n";

// Each operation returns false when XML cannot represent the value or the list has become too long.
class XmlWriter {
public:
    explicit XmlWriter(std::size_t largest)
        : m_largest(largest)
    {
    }

    std::optional<std::string> list(const PropertyValue& root)
    {
        m_out = beginning;
        if (!std::visit(*this, root.value))
            return std::nullopt;
        m_out += ending;
        return fits() ? std::optional(std::move(m_out)) : std::nullopt;
    }

    bool operator()(bool flag) { return line(flag ? "<true/>" : "<false/>"); }
    bool operator()(std::int64_t number) { return element("integer", std::to_string(number)); }
    bool operator()(std::uint64_t number) { return element("integer", std::to_string(number)); }
    bool operator()(double number)
    {
        std::array<char, 32> digits{}; // the shortest form that reads back as the same number
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        return element("real", {digits.data(), end});
    }
    bool operator()(const PropertyValue::Date& date)
    {
        const auto text = xmlDateOf(date.seconds);
        return text && element("date", *text);
    }
    bool operator()(const std::string& text) { return element("string", text); }
    bool operator()(const PropertyValue::Data& data)
    {
        std::string text;
        appendBase64(text, data.bytes);
        return element("data", text);
    }
    bool operator()(const PropertyValue::Uid& uid)
    {
        return line("<dict>") && nested([&] {
            return element("key", "CF$UID") && element("integer", std::to_string(uid.number));
        }) && line("</dict>");
    }
    bool operator()(const PropertyValue::Array& items)
    {
        if (items.empty())
            return line("<array/>");
        return line("<array>") && nested([&] {
            for (const PropertyValue& item : items) {
                if (!std::visit(*this, item.value))
                    return false;
            }
            return true;
        }) && line("</array>");
    }
    bool operator()(const PropertyValue::Dictionary& entries)
    {
        if (entries.empty())
            return line("<dict/>");
        return line("<dict>") && nested([&] {
            for (const auto& entry : entries) {
                if (!element("key", entry.key) || !std::visit(*this, entry.value.value))
                    return false;
            }
            return true;
        }) && line("</dict>");
    }

private:
    bool fits() const { return m_out.size() <= m_largest; }

    bool line(std::string_view text)
    {
        m_out.append(m_depth, '\t').append(text).append("\n");
        return fits();
    }
    bool element(std::string_view name, std::string_view text)
    {
        m_out.append(m_depth, '\t').append("<").append(name).append(">");
        const bool held = appendXmlText(m_out, text);
        m_out.append("</").append(name).append(">\n");
        return held && fits();
    }
    template <class Write> bool nested(const Write& write)
    {
        ++m_depth;
        const bool written = write();
        --m_depth;
        return written;
    }

    std::size_t m_largest;
    std::size_t m_depth = 0;
    std::string m_out;
};

} // namespace

std::optional<std::string> xmlPropertyList(const PropertyValue& root, std::size_t largest)
{
    return XmlWriter(largest).list(root);
}

} // namespace quorvane::platform
