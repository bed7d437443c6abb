#include "platform/BinaryPropertyList.h"

#include "platform/PropertyListBounds.h"
#include "platform/Unicode.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

// A list is a sequence of objects, each a marker byte and its contents, then a table of object offsets, then
// a trailer of 32 bytes: 6 unused, the width of an offset in the table, the width of a reference to an
// object, and, eight bytes each, the number of objects, the number of the root and the offset of the table.
// All numbers are big-endian.

namespace quorvane::platform {

namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::size_t trailerSize = 32;

// Texts may be shared by reference; expanded, they may take up to twice the size of the largest list.
constexpr std::uint64_t mostTextBytes = 2 * largestPropertyList;

// The upper half of a marker byte.
enum class Kind : std::uint8_t {
    constant = 0x0,
    integer = 0x1,
    real = 0x2,
    date = 0x3,
    data = 0x4,
    ascii = 0x5,
    utf16 = 0x6,
    uid = 0x8,
    array = 0xA,
    dictionary = 0xD
};

std::optional<std::uint64_t> numberAt(std::string_view bytes, std::uint64_t place, std::uint64_t width)
{
    if (width == 0 || width > 8 || place > bytes.size() || width > bytes.size() - place)
        return std::nullopt;
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(place, width))
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

std::optional<double> realAt(std::string_view bytes, std::uint64_t place, std::uint64_t width)
{
    const auto bits = numberAt(bytes, place, width);
    if (bits && width == 4)
        return std::bit_cast<float>(static_cast<std::uint32_t>(*bits));
    return bits && width == 8 ? std::optional(std::bit_cast<double>(*bits)) : std::nullopt;
}

// Unsigned up to 4 bytes, signed with 8; 16 for larger values.
std::optional<PropertyValue> integerAt(std::string_view bytes, std::uint64_t place, std::uint64_t width)
{
    if (width == 16) {
        const auto high = numberAt(bytes, place, 8);
        const auto low = numberAt(bytes, place + 8, 8);
        if (!high || !low || *high != 0)
            return std::nullopt;
        if (*low > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return PropertyValue{*low};
        return PropertyValue{static_cast<std::int64_t>(*low)};
    }
    const auto number = numberAt(bytes, place, width);
    return number ? std::optional(PropertyValue{static_cast<std::int64_t>(*number)}) : std::nullopt;
}

class BinaryReader {
public:
    // None when the trailer is not valid.
    static std::optional<BinaryReader> of(std::string_view list)
    {
        if (list.size() < magic.size() + trailerSize)
            return std::nullopt;
        const std::uint64_t trailer = list.size() - trailerSize;
        BinaryReader reader;
        reader.m_list = list;
        reader.m_offsetWidth = *numberAt(list, trailer + 6, 1);
        reader.m_referenceWidth = *numberAt(list, trailer + 7, 1);
        const std::uint64_t objects = *numberAt(list, trailer + 8, 8);
        reader.m_root = *numberAt(list, trailer + 16, 8);
        reader.m_table = *numberAt(list, trailer + 24, 8);
        if (objects > list.size() || reader.m_root >= objects || reader.m_table >= list.size())
            return std::nullopt;
        reader.m_isOpened.resize(objects);
        return reader;
    }

    std::optional<PropertyValue> root()
    {
        PropertyValue root;
        return unfold(m_root, root, 0) ? std::optional(std::move(root)) : std::nullopt;
    }

private:
    struct Object {
        std::uint64_t number = 0;
        Kind kind = Kind::constant;
        std::uint64_t count = 0; // the lower half of the marker, or the extended count after it
        std::uint64_t place = 0; // offset of its contents
    };

    std::optional<Object> objectOf(std::uint64_t number) const
    {
        constexpr std::uint64_t countFollows = 0xF;
        const auto place = numberAt(m_list, m_table + number * m_offsetWidth, m_offsetWidth);
        const auto marker = place ? numberAt(m_list, *place, 1) : std::nullopt;
        if (!marker || number >= m_isOpened.size())
            return std::nullopt;
        Object object{number, static_cast<Kind>(*marker >> 4U), *marker & 0xFU, *place + 1};
        if (object.count != countFollows || object.kind == Kind::constant)
            return object;
        const auto countMarker = numberAt(m_list, object.place, 1);
        const std::uint64_t width = std::uint64_t{1} << (countMarker.value_or(0) & 0x3U);
        const auto count = numberAt(m_list, object.place + 1, width);
        if (!countMarker || static_cast<Kind>(*countMarker >> 4U) != Kind::integer || !count
            || *count > m_list.size())
            return std::nullopt;
        object.count = *count;
        object.place += 1 + width;
        return object;
    }

    bool unfold(std::uint64_t number, PropertyValue& out, int depth)
    {
        const auto object = objectOf(number);
        if (!object || depth > deepestPropertyList)
            return false;
        if (object->kind == Kind::array)
            return unfoldArray(*object, out, depth);
        if (object->kind == Kind::dictionary)
            return unfoldDictionary(*object, out, depth);
        auto scalar = scalarOf(*object);
        if (scalar)
            out = std::move(*scalar);
        return scalar.has_value();
    }

    std::optional<PropertyValue> scalarOf(const Object& object)
    {
        constexpr std::uint64_t falseMark = 0x8;
        constexpr std::uint64_t trueMark = 0x9;
        const std::uint64_t width = object.count < 5 ? std::uint64_t{1} << object.count : 0;
        switch (object.kind) {
        case Kind::constant:
            if (object.count != falseMark && object.count != trueMark)
                return std::nullopt;
            return PropertyValue{object.count == trueMark};
        case Kind::integer:
            return integerAt(m_list, object.place, width);
        case Kind::real:
        case Kind::date: {
            const auto real = realAt(m_list, object.place, width);
            if (!real)
                return std::nullopt;
            return object.kind == Kind::real ? PropertyValue{*real}
                                             : PropertyValue{PropertyValue::Date{*real}};
        }
        case Kind::uid: {
            const auto uid = numberAt(m_list, object.place, object.count + 1);
            return uid ? std::optional(PropertyValue{PropertyValue::Uid{*uid}}) : std::nullopt;
        }
        case Kind::data: {
            const auto bytes = contents(object, 1);
            return bytes ? std::optional(PropertyValue{PropertyValue::Data{std::string(*bytes)}})
                         : std::nullopt;
        }
        default:
            auto text = textOf(object);
            return text ? std::optional(PropertyValue{std::move(*text)}) : std::nullopt;
        }
    }

    // The bytes of a text or of data; none when they exceed what may be expanded.
    std::optional<std::string_view> contents(const Object& object, std::uint64_t unitSize)
    {
        const std::uint64_t size = object.count * unitSize;
        m_textBytes += size;
        if (size > m_list.size() - object.place || m_textBytes > mostTextBytes)
            return std::nullopt;
        return m_list.substr(object.place, size);
    }

    std::optional<std::string> textOf(const Object& object)
    {
        if (object.kind == Kind::utf16) {
            const auto units = contents(object, 2);
            return units ? textFromUtf16(*units, false) : std::nullopt;
        }
        const auto bytes = object.kind == Kind::ascii ? contents(object, 1) : std::nullopt;
        return bytes && isValidUtf8(*bytes) ? std::optional(std::string(*bytes)) : std::nullopt;
    }

    // True when a container with that many references may be expanded. False when it was opened before: it is
    // shared or contains itself.
    bool open(const Object& container, std::uint64_t references)
    {
        m_values += references;
        if (m_isOpened[container.number] || m_values > mostPropertyValues)
            return false;
        m_isOpened[container.number] = true;
        return true;
    }

    std::optional<std::uint64_t> reference(const Object& container, std::uint64_t index) const
    {
        return numberAt(m_list, container.place + index * m_referenceWidth, m_referenceWidth);
    }

    bool unfoldArray(const Object& object, PropertyValue& out, int depth)
    {
        if (!open(object, object.count))
            return false;
        auto& items = out.value.emplace<PropertyValue::Array>(object.count);
        for (std::uint64_t i = 0; i < object.count; ++i) {
            const auto item = reference(object, i);
            if (!item || !unfold(*item, items[i], depth + 1))
                return false;
        }
        return true;
    }

    bool unfoldDictionary(const Object& object, PropertyValue& out, int depth)
    {
        if (!open(object, 2 * object.count))
            return false;
        auto& entries = out.value.emplace<PropertyValue::Dictionary>(object.count);
        for (std::uint64_t i = 0; i < object.count; ++i) {
            const auto keyNumber = reference(object, i);
            const auto keyObject = keyNumber ? objectOf(*keyNumber) : std::nullopt;
            auto key = keyObject ? textOf(*keyObject) : std::nullopt;
            const auto value = reference(object, object.count + i);
            if (!key || !value || !unfold(*value, entries[i].value, depth + 1))
                return false;
            entries[i].key = std::move(*key);
        }
        dropRepeatedKeys(entries);
        return true;
    }

    std::string_view m_list;
    std::uint64_t m_offsetWidth = 0;
    std::uint64_t m_referenceWidth = 0;
    std::uint64_t m_root = 0;
    std::uint64_t m_table = 0;
    std::vector<bool> m_isOpened; // by object, of containers
    std::uint64_t m_values = 0;
    std::uint64_t m_textBytes = 0;
};

} // namespace

bool isBinaryPropertyList(std::string_view bytes)
{
    return bytes.starts_with(magic);
}

std::optional<PropertyValue> readBinaryPropertyList(std::string_view bytes)
{
    auto reader = BinaryReader::of(bytes);
    return reader ? reader->root() : std::nullopt;
}

} // namespace quorvane::platform
