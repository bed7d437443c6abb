#include "platform/PropertyListText.h"

#include "platform/Unicode.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <sstream>
#include <string_view>
#include <utility>

namespace quorvane::platform {

namespace {

constexpr int deepestShown = 64;
constexpr std::size_t mostShown = 64U << 10U; // bytes

// Any date that a list can hold, beyond 64 bits too.
std::string wholeSeconds(double seconds)
{
    std::array<char, 512> digits{};
    const char* end = std::to_chars(
        digits.data(), digits.data() + digits.size(), std::trunc(seconds), std::chars_format::fixed)
                          .ptr;
    return std::string(std::as_const(digits).data(), end);
}

class TextWriter {
public:
    void write(const PropertyValue& value)
    {
        if (m_depth > deepestShown || isFull())
            m_out << "...";
        else
            std::visit(*this, value.value);
    }

    std::string text() const
    {
        std::string text = m_out.str();
        if (text.size() > mostShown) {
            text.resize(startOfLastCharacter(std::string_view(text).substr(0, mostShown)));
            text += "...";
        }
        return text;
    }

    void operator()(bool flag) { m_out << (flag ? 1 : 0); }
    void operator()(std::int64_t number) { m_out << number; }
    // Deliberate: shown as the signed number of the same 64 bits, as other programs' logs show it.
    void operator()(std::uint64_t number) { m_out << static_cast<std::int64_t>(number); }
    void operator()(double number) { m_out << number; }
    void operator()(const PropertyValue::Date& date) { m_out << wholeSeconds(date.seconds); }
    void operator()(const PropertyValue::Uid& uid) { m_out << uid.number; }
    void operator()(const std::string& text)
    {
        m_out << '"';
        for (const char c : std::string_view(text).substr(0, mostShown)) {
            if (c == '"' || c == '\\')
                m_out << '\\' << c;
            else if (c == '\n')
                m_out << "\\n";
            else
                m_out << c;
        }
        m_out << '"';
    }
    void operator()(const PropertyValue::Data& data)
    {
        constexpr std::string_view digits = "0123456789abcdef";
        m_out << '<';
        for (const char byte : std::string_view(data.bytes).substr(0, mostShown)) {
            const auto value = static_cast<unsigned char>(byte);
            m_out << digits[value >> 4U] << digits[value & 0xFU];
        }
        m_out << '>';
    }
    void operator()(const PropertyValue::Array& items)
    {
        ++m_depth;
        const char* separator = "(";
        for (const PropertyValue& item : items) {
            m_out << separator;
            if (isFull())
                break;
            write(item);
            separator = ", ";
        }
        m_out << (items.empty() ? "()" : ")");
        --m_depth;
    }
    void operator()(const PropertyValue::Dictionary& entries)
    {
        ++m_depth;
        const char* separator = "{";
        for (const auto& entry : entries) {
            m_out << separator;
            if (isFull())
                break;
            (*this)(entry.key);
            m_out << " = ";
            write(entry.value);
            separator = "; ";
        }
        m_out << (entries.empty() ? "{}" : "}");
        --m_depth;
    }

private:
    bool isFull() { return static_cast<std::size_t>(m_out.tellp()) > mostShown; }

    std::ostringstream m_out;
    int m_depth = 0;
};

} // namespace

std::string propertyListText(const PropertyValue& value)
{
    TextWriter writer;
    writer.write(value);
    return writer.text();
}

} // namespace quorvane::platform
