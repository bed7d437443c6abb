#include "platform/BinaryListShape.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace quorvane {

namespace {

// The end of a list: 6 unused bytes, the width of an offset, the width of a reference, then the number of
// values, the number of the root and the place of the offset table, eight bytes each; all big-endian.
constexpr std::size_t trailerSize = 32;

std::optional<std::uint64_t> numberAt(std::string_view bytes, std::uint64_t place, std::uint64_t width)
{
    if (width == 0 || width > 8 || place > bytes.size() || width > bytes.size() - place)
        return std::nullopt;
    std::uint64_t number = 0;
    for (const char byte : bytes.substr(place, width))
        number = number << 8U | static_cast<unsigned char>(byte);
    return number;
}

constexpr std::uint64_t mostUnfoldedBytes = 1U << 20U;
constexpr std::size_t deepestNesting = 512;

// What a value holds: the references of a container, or the bytes of a string or data.
struct Content {
    std::uint64_t place = 0;
    std::uint64_t references = 0;
    std::uint64_t bytes = 0;
};

// None when the value at `place` is damaged.
std::optional<Content> contentAt(std::string_view list, std::uint64_t place)
{
    enum Kind : std::uint64_t {
        data = 0x4,
        ascii = 0x5,
        utf16 = 0x6,
        array = 0xA,
        set = 0xC,
        dictionary = 0xD
    };
    constexpr std::uint64_t countFollows = 0xF;
    const auto marker = numberAt(list, place, 1);
    if (!marker)
        return std::nullopt;
    const std::uint64_t kind = *marker >> 4U;
    std::uint64_t count = *marker & 0xFU;
    Content content;
    content.place = place + 1;
    const bool isContainer = kind == array || kind == set || kind == dictionary;
    if (!isContainer && kind != data && kind != ascii && kind != utf16)
        return content; // numbers, dates and the like are short
    if (count == countFollows) {
        const auto widthMarker = numberAt(list, content.place, 1);
        if (!widthMarker)
            return std::nullopt;
        const std::uint64_t width = std::uint64_t{1} << (*widthMarker & 0x3U);
        const auto longCount = numberAt(list, content.place + 1, width);
        if (!longCount || *longCount > list.size())
            return std::nullopt;
        count = *longCount;
        content.place += 1 + width;
    }
    if (isContainer)
        content.references = kind == dictionary ? 2 * count : count;
    else
        content.bytes = kind == utf16 ? 2 * count : count;
    return content;
}

// The values of a list by number.
class ValueTable {
public:
    // None when the end of the list does not describe one.
    static std::optional<ValueTable> of(std::string_view list)
    {
        if (list.size() < trailerSize)
            return std::nullopt;
        const std::uint64_t trailer = list.size() - trailerSize;
        ValueTable table;
        table.m_list = list;
        table.m_offsetWidth = *numberAt(list, trailer + 6, 1);
        table.m_referenceWidth = *numberAt(list, trailer + 7, 1);
        table.m_values = *numberAt(list, trailer + 8, 8);
        table.m_root = *numberAt(list, trailer + 16, 8);
        table.m_offsets = *numberAt(list, trailer + 24, 8);
        const bool isSound
            = table.m_values <= list.size() && table.m_root < table.m_values && table.m_offsets < list.size();
        return isSound ? std::optional(table) : std::nullopt;
    }

    std::uint64_t values() const { return m_values; }
    std::uint64_t root() const { return m_root; }

    std::optional<Content> content(std::uint64_t value) const
    {
        const auto place = numberAt(m_list, m_offsets + value * m_offsetWidth, m_offsetWidth);
        return place ? contentAt(m_list, *place) : std::nullopt;
    }

    // The number of the value that the container refers to.
    std::optional<std::uint64_t> target(const Content& container, std::uint64_t reference) const
    {
        const auto number
            = numberAt(m_list, container.place + reference * m_referenceWidth, m_referenceWidth);
        return number && *number < m_values ? number : std::nullopt;
    }

private:
    std::string_view m_list;
    std::uint64_t m_offsetWidth = 0;
    std::uint64_t m_referenceWidth = 0;
    std::uint64_t m_values = 0;
    std::uint64_t m_root = 0;
    std::uint64_t m_offsets = 0;
};

} // namespace

bool unfoldsWithinBounds(std::string_view binaryList)
{
    const auto table = ValueTable::of(binaryList);
    if (!table)
        return false;
    // Level by level from the root. A container that is met a second time is shared or contains itself.
    std::vector<bool> isMet(table->values(), false);
    std::vector<std::uint64_t> level{table->root()};
    std::uint64_t unfolded = 0;
    for (std::size_t depth = 0; !level.empty(); ++depth) {
        if (depth > deepestNesting)
            return false;
        std::vector<std::uint64_t> below;
        for (const std::uint64_t value : level) {
            const auto content = table->content(value);
            if (!content || (content->references > 0 && isMet[value]))
                return false;
            isMet[value] = true;
            unfolded += content->references + content->bytes + 1;
            if (unfolded > mostUnfoldedBytes)
                return false;
            for (std::uint64_t reference = 0; reference < content->references; ++reference) {
                const auto target = table->target(*content, reference);
                if (!target)
                    return false;
                below.push_back(*target);
            }
        }
        level = std::move(below);
    }
    return true;
}

} // namespace quorvane
