#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane::platform {

// A value of a property list, with all that it contains. Texts are UTF-8.
struct PropertyValue {
    struct Date {
        double seconds = 0; // since the start of 2001, UTC
    };
    struct Data {
        std::string bytes;
    };
    // A reference within an archive.
    struct Uid {
        std::uint64_t number = 0;
    };
    struct Entry;
    using Array = std::vector<PropertyValue>;
    using Dictionary = std::vector<Entry>; // in the order of the file; no key twice

    // An unsigned number only beyond what a signed one holds.
    std::variant<bool, std::int64_t, std::uint64_t, double, Date, std::string, Data, Uid, Array, Dictionary>
        value;

    // Null for a value of another kind.
    template <class Kind> const Kind* as() const { return std::get_if<Kind>(&value); }

    // The value under `key`; null when there is none or this is no dictionary.
    const PropertyValue* find(std::string_view key) const;
    template <class Kind> const Kind* find(std::string_view key) const
    {
        const PropertyValue* found = find(key);
        return found == nullptr ? nullptr : found->as<Kind>();
    }
};

struct PropertyValue::Entry {
    std::string key;
    PropertyValue value;
};

// Of entries with one key, keeps the last one's value in the first one's place.
void dropRepeatedKeys(PropertyValue::Dictionary& dictionary);

} // namespace quorvane::platform
