#include "codesign/BinaryPropertyList.h"

namespace quorvane {

namespace {

constexpr std::string_view magic = "bplist00";
constexpr std::uint64_t trailerSize = 32;
constexpr unsigned asciiText = 0x5;
constexpr unsigned utf16Text = 0x6;
constexpr unsigned dictionary = 0xd;

// Keys of an Info.plist are looked at one by one.
constexpr std::uint64_t mostKeys = 4096;

void appendCodeUnit(std::string& out, std::uint32_t unit)
{
    // Names of files are compared as bytes: what is beyond ASCII only needs to come out the same each time.
    if (unit < 0x80) {
        out += static_cast<char>(unit);
    } else if (unit < 0x800) {
        out += static_cast<char>(0xc0U | unit >> 6U);
        out += static_cast<char>(0x80U | (unit & 0x3fU));
    } else {
        out += static_cast<char>(0xe0U | unit >> 12U);
        out += static_cast<char>(0x80U | (unit >> 6U & 0x3fU));
        out += static_cast<char>(0x80U | (unit & 0x3fU));
    }
}

struct Object {
    unsigned type = 0;
    std::uint64_t count = 0;
    std::uint64_t body = 0; // where its contents begin
};

// The object table of a list, reached through the offsets that the trailer names.
class ObjectTable {
public:
    explicit ObjectTable(ByteView bytes)
        : m_bytes(bytes)
    {
        const ByteView trailer
            = bytes.from(bytes.size() < trailerSize ? bytes.size() : bytes.size() - trailerSize);
        m_offsetSize = trailer.u8(6);
        m_referenceSize = trailer.u8(7);
        m_root = trailer.u64(16);
        m_table = trailer.u64(24);
    }

    std::uint64_t root() const { return m_root; }

    std::optional<Object> object(std::uint64_t index) const
    {
        const bool sizesSound
            = m_offsetSize >= 1 && m_offsetSize <= 8 && m_referenceSize >= 1 && m_referenceSize <= 8;
        if (!sizesSound || index > m_bytes.size() || m_table > m_bytes.size())
            return std::nullopt;
        const std::uint64_t entry = m_table + index * m_offsetSize;
        const std::uint64_t at = m_bytes.number(entry, m_offsetSize, ByteOrder::big);
        if (!m_bytes.holds(entry, m_offsetSize) || !m_bytes.holds(at, 1))
            return std::nullopt;
        return objectAt(at);
    }

    // The object that the `position`-th reference in the body of another one names.
    std::optional<Object> referred(const Object& from, std::uint64_t position) const
    {
        const std::uint64_t at = from.body + position * m_referenceSize;
        if (!m_bytes.holds(at, m_referenceSize))
            return std::nullopt;
        return object(m_bytes.number(at, m_referenceSize, ByteOrder::big));
    }

    std::optional<std::string> text(const Object& object) const
    {
        if (object.type == asciiText) {
            const auto part = m_bytes.part(object.body, object.count);
            return part ? std::optional<std::string>(part->text()) : std::nullopt;
        }
        if (object.type != utf16Text || object.count > m_bytes.size()
            || !m_bytes.holds(object.body, object.count * 2))
            return std::nullopt;
        std::string text;
        for (std::uint64_t i = 0; i < object.count; ++i)
            appendCodeUnit(
                text, static_cast<std::uint32_t>(m_bytes.number(object.body + i * 2, 2, ByteOrder::big)));
        return text;
    }

private:
    std::optional<Object> objectAt(std::uint64_t at) const
    {
        constexpr unsigned countFollows = 0xf;
        const unsigned marker = m_bytes.u8(at);
        Object result{marker >> 4U, marker & 0xfU, at + 1};
        if (result.count == countFollows) {
            // An integer object: its low bits are the logarithm of its size.
            const unsigned integer = m_bytes.u8(at + 1);
            const unsigned size = 1U << (integer & 0x3U);
            if (integer >> 4U != 1 || (integer & 0xfU) > 3 || !m_bytes.holds(at + 2, size))
                return std::nullopt;
            result.count = m_bytes.number(at + 2, size, ByteOrder::big);
            result.body = at + 2 + size;
        }
        return result;
    }

    ByteView m_bytes;
    unsigned m_offsetSize = 0;
    unsigned m_referenceSize = 0;
    std::uint64_t m_root = 0;
    std::uint64_t m_table = 0;
};

} // namespace

bool isBinaryPropertyList(ByteView bytes)
{
    return bytes.text().starts_with(magic);
}

bool readTextFromBinaryPropertyList(ByteView bytes, std::string_view key, std::optional<std::string>& text)
{
    const ObjectTable table(bytes);
    const auto root = table.object(table.root());
    if (!root || root->type != dictionary || root->count > mostKeys)
        return false;
    text.reset();
    for (std::uint64_t i = 0; i < root->count; ++i) {
        const auto name = table.referred(*root, i);
        if (!name)
            return false;
        // Other keys need not be unfolded to be told apart.
        if (name->count != key.size() || table.text(*name) != key)
            continue;
        const auto value = table.referred(*root, root->count + i);
        if (!value)
            return false;
        text = table.text(*value);
        return true;
    }
    return true;
}

} // namespace quorvane
