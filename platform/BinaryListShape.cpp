#include "platform/BinaryListShape.h"

#include <cstddef>
#include <cstdint>
#include <optional>
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

// Where a container's references stand, and how many there are.
struct References {
    std::uint64_t place;
    std::uint64_t count;
};

// The references of the value at `place`; count 0 when it is no container, none when it is damaged.
std::optional<References> referencesAt(std::string_view bytes, std::uint64_t place)
{
    constexpr std::uint64_t array = 0xA;
    constexpr std::uint64_t set = 0xC;
    constexpr std::uint64_t dictionary = 0xD;
    constexpr std::uint64_t countFollows = 0xF;
    const auto marker = numberAt(bytes, place, 1);
    if (!marker)
        return std::nullopt;
    const std::uint64_t kind = *marker >> 4U;
    if (kind != array && kind != set && kind != dictionary)
        return References{place, 0};
    References found{place + 1, *marker & 0xFU};
    if (found.count == countFollows) {
        const auto widthMarker = numberAt(bytes, found.place, 1);
        if (!widthMarker)
            return std::nullopt;
        const std::uint64_t width = std::uint64_t{1} << (*widthMarker & 0x3U);
        const auto count = numberAt(bytes, found.place + 1, width);
        if (!count || *count > bytes.size())
            return std::nullopt;
        found = {found.place + 1 + width, *count};
    }
    if (kind == dictionary)
        found.count *= 2;
    return found;
}

} // namespace

bool unfoldsWithinBounds(std::string_view binaryList)
{
    if (binaryList.size() < trailerSize)
        return false;
    const std::uint64_t trailer = binaryList.size() - trailerSize;
    const auto offsetWidth = numberAt(binaryList, trailer + 6, 1);
    const auto referenceWidth = numberAt(binaryList, trailer + 7, 1);
    const auto values = numberAt(binaryList, trailer + 8, 8);
    const auto root = numberAt(binaryList, trailer + 16, 8);
    const auto table = numberAt(binaryList, trailer + 24, 8);
    if (!offsetWidth || !referenceWidth || *values > binaryList.size() || *root >= *values)
        return false;

    std::vector<std::uint8_t> isContainer(*values, 0);
    std::vector<std::uint8_t> isReferredTo(*values, 0);
    isReferredTo[*root] = 1;
    std::uint64_t references = 0;
    std::vector<std::uint8_t> isShared(*values, 0);
    for (std::uint64_t value = 0; value < *values; ++value) {
        const auto place = numberAt(binaryList, *table + value * *offsetWidth, *offsetWidth);
        const auto found = place ? referencesAt(binaryList, *place) : std::nullopt;
        if (!found)
            return false;
        isContainer[value] = found->count > 0 ? 1 : 0;
        references += found->count;
        if (references > binaryList.size()) // values lie on top of each other
            return false;
        for (std::uint64_t number = 0; number < found->count; ++number) {
            const auto target
                = numberAt(binaryList, found->place + number * *referenceWidth, *referenceWidth);
            if (!target || *target >= *values)
                return false;
            isShared[*target] |= isReferredTo[*target];
            isReferredTo[*target] = 1;
        }
    }
    for (std::uint64_t value = 0; value < *values; ++value) {
        if (isContainer[value] != 0 && isShared[value] != 0)
            return false;
    }
    return true;
}

} // namespace quorvane
