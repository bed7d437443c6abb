#include "platform/PropertyListWriter.h"

#include "platform/Unicode.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvane::platform {

namespace {

// The bytes that a number takes in the binary form: 1, 2, 4 or 8.
unsigned widthOf(std::uint64_t number)
{
    if (number <= UINT8_MAX)
        return 1;
    if (number <= UINT16_MAX)
        return 2;
    return number <= UINT32_MAX ? 4 : 8;
}

void collectTexts(const PropertyValue& value, std::vector<std::string_view>& texts)
{
    if (const auto* text = value.as<std::string>()) {
        texts.push_back(*text);
    } else if (const auto* items = value.as<PropertyValue::Array>()) {
        for (const PropertyValue& item : *items)
            collectTexts(item, texts);
    } else if (const auto* entries = value.as<PropertyValue::Dictionary>()) {
        for (const auto& entry : *entries) {
            texts.push_back(entry.key);
            collectTexts(entry.value, texts);
        }
    }
}

std::uint64_t countObjects(const PropertyValue& value)
{
    std::uint64_t count = 1;
    if (const auto* items = value.as<PropertyValue::Array>()) {
        for (const PropertyValue& item : *items)
            count += countObjects(item);
    } else if (const auto* entries = value.as<PropertyValue::Dictionary>()) {
        for (const auto& entry : *entries)
            count += countObjects(entry.value);
    }
    return count;
}

// Objects are numbered as they are written: all texts in sorted order, then each container after its
// contents, the root last.
class BinaryWriter {
public:
    explicit BinaryWriter(std::size_t largest)
        : m_largest(largest)
    {
    }

    std::optional<std::string> list(const PropertyValue& root)
    {
        collectTexts(root, m_texts);
        std::sort(m_texts.begin(), m_texts.end());
        m_texts.erase(std::unique(m_texts.begin(), m_texts.end()), m_texts.end());
        m_referenceWidth = widthOf(m_texts.size() + countObjects(root));
        m_out = "bplist00";
        for (const std::string_view text : m_texts)
            writeText(text);
        std::visit(*this, root.value);
        return tooLong() ? std::nullopt : withTable();
    }

    // Each writes the value, unless the list is too long already, and returns its object number.
    std::uint32_t operator()(bool flag)
    {
        begin(0x0, flag ? 9U : 8U);
        return last();
    }
    std::uint32_t operator()(std::int64_t number)
    {
        const auto bits = static_cast<std::uint64_t>(number);
        beginNumber(0x1, number < 0 ? 8 : widthOf(bits), bits);
        return last();
    }
    std::uint32_t operator()(std::uint64_t number)
    {
        constexpr unsigned logarithmOf16 = 4;
        begin(0x1, logarithmOf16);
        put(0, 8);
        put(number, 8);
        return last();
    }
    std::uint32_t operator()(double number)
    {
        beginNumber(0x2, 8, std::bit_cast<std::uint64_t>(number));
        return last();
    }
    std::uint32_t operator()(const PropertyValue::Date& date)
    {
        beginNumber(0x3, 8, std::bit_cast<std::uint64_t>(date.seconds));
        return last();
    }
    std::uint32_t operator()(const std::string& text) const { return textNumber(text); }
    std::uint32_t operator()(const PropertyValue::Data& data)
    {
        beginCounted(0x4, data.bytes.size());
        m_out += data.bytes;
        return last();
    }
    std::uint32_t operator()(const PropertyValue::Uid& uid)
    {
        begin(0x8, widthOf(uid.number) - 1);
        put(uid.number, widthOf(uid.number));
        return last();
    }
    std::uint32_t operator()(const PropertyValue::Array& items)
    {
        std::vector<std::uint32_t> references;
        for (const PropertyValue& item : items)
            references.push_back(written(item));
        return container(0xA, items.size(), references);
    }
    std::uint32_t operator()(const PropertyValue::Dictionary& entries)
    {
        std::vector<std::uint32_t> references;
        for (const auto& entry : entries)
            references.push_back(textNumber(entry.key));
        for (const auto& entry : entries)
            references.push_back(written(entry.value));
        return container(0xD, entries.size(), references);
    }

private:
    bool tooLong() const { return m_out.size() > m_largest; }
    std::uint32_t last() const { return static_cast<std::uint32_t>(m_places.size() - 1); }
    std::uint32_t written(const PropertyValue& value)
    {
        return tooLong() ? 0 : std::visit(*this, value.value);
    }

    std::uint32_t textNumber(std::string_view text) const
    {
        return static_cast<std::uint32_t>(
            std::lower_bound(m_texts.begin(), m_texts.end(), text) - m_texts.begin());
    }

    void put(std::uint64_t number, unsigned width)
    {
        for (unsigned shift = width * 8; shift > 0; shift -= 8)
            m_out += static_cast<char>(number >> (shift - 8) & 0xFFU);
    }

    void begin(unsigned kind, unsigned low)
    {
        m_places.push_back(m_out.size());
        put(kind << 4U | low, 1);
    }
    void beginNumber(unsigned kind, unsigned width, std::uint64_t bits)
    {
        begin(kind, static_cast<unsigned>(std::countr_zero(width)));
        put(bits, width);
    }
    void beginCounted(unsigned kind, std::uint64_t count)
    {
        constexpr unsigned countFollows = 0xF;
        constexpr unsigned integer = 0x1;
        begin(kind, count < countFollows ? static_cast<unsigned>(count) : countFollows);
        if (count < countFollows)
            return;
        const unsigned width = widthOf(count);
        put(integer << 4U | static_cast<unsigned>(std::countr_zero(width)), 1);
        put(count, width);
    }

    void writeText(std::string_view text)
    {
        const bool isAscii = std::all_of(
            text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (isAscii) {
            beginCounted(0x5, text.size());
            m_out += text;
            return;
        }
        const std::string units = utf16FromText(text);
        beginCounted(0x6, units.size() / 2);
        m_out += units;
    }

    std::uint32_t container(unsigned kind, std::size_t count, const std::vector<std::uint32_t>& references)
    {
        beginCounted(kind, count);
        for (const std::uint32_t number : references)
            put(number, m_referenceWidth);
        return last();
    }

    // Appends the offset table and the trailer.
    std::optional<std::string> withTable()
    {
        const std::uint64_t table = m_out.size();
        const unsigned offsetWidth = widthOf(table);
        if (table + m_places.size() * offsetWidth > m_largest)
            return std::nullopt;
        for (const std::uint64_t place : m_places)
            put(place, offsetWidth);
        m_out.append(6, '\0');
        put(offsetWidth, 1);
        put(m_referenceWidth, 1);
        put(m_places.size(), 8);
        put(m_places.size() - 1, 8);
        put(table, 8);
        return tooLong() ? std::nullopt : std::optional(std::move(m_out));
    }

    std::size_t m_largest;
    std::vector<std::string_view> m_texts; // sorted, each once
    std::vector<std::uint64_t> m_places; // offsets of the objects
    unsigned m_referenceWidth = 1;
    std::string m_out;
};

} // namespace

std::optional<std::string> binaryPropertyList(const PropertyValue& root, std::size_t largest)
{
    return BinaryWriter(largest).list(root);
}

} // namespace quorvane::platform
