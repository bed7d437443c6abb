#include "platform/PropertyValue.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace quorvane::platform {

const PropertyValue* PropertyValue::find(std::string_view key) const
{
    const auto* dictionary = as<Dictionary>();
    if (dictionary == nullptr)
        return nullptr;
    const auto found = std::find_if(
        dictionary->begin(), dictionary->end(), [key](const Entry& entry) { return entry.key == key; });
    return found == dictionary->end() ? nullptr : &found->value;
}

// Sorts positions by key: a hash table could be made slow with colliding keys.
void dropRepeatedKeys(PropertyValue::Dictionary& dictionary)
{
    std::vector<std::uint32_t> places(dictionary.size());
    std::iota(places.begin(), places.end(), 0U);
    std::sort(places.begin(), places.end(), [&](std::uint32_t left, std::uint32_t right) {
        const int order = dictionary[left].key.compare(dictionary[right].key);
        return order != 0 ? order < 0 : left < right;
    });
    std::vector<bool> isRepeated(dictionary.size(), false);
    std::size_t first = 0; // of the positions with one key
    for (std::size_t i = 1; i < places.size(); ++i) {
        if (dictionary[places[i]].key != dictionary[places[first]].key) {
            first = i;
            continue;
        }
        isRepeated[places[i]] = true;
        dictionary[places[first]].value = std::move(dictionary[places[i]].value);
    }
    const auto* begin = dictionary.data();
    dictionary.erase(std::remove_if(dictionary.begin(), dictionary.end(),
                         [&](const PropertyValue::Entry& entry) {
                             return isRepeated[static_cast<std::size_t>(&entry - begin)];
                         }),
        dictionary.end());
}

} // namespace quorvane::platform
