#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quorvane::platform {

// A value of a property list, including everything it contains. Texts are UTF-8. A value object.
struct PropertyValue {
    struct Date {
        double seconds = 0; // since the start of 2001, UTC
    };
    struct Data {
        std::string bytes;
    };
    // A reference within a keyed archive.
    struct Uid {
        std::uint64_t number = 0;
    };
    struct Entry;
    using Array = std::vector<PropertyValue>;
    using Dictionary = std::vector<Entry>; // in the order of the file; no key twice

    // Unsigned only for values beyond std::int64_t.
    std::variant<bool, std::int64_t, std::uint64_t, double, Date, std::string, Data, Uid, Array, Dictionary>
        value;

    // Null when the value is of another kind.
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

// Of entries with the same key, keeps the last value at the position of the first.
void dropRepeatedKeys(PropertyValue::Dictionary& dictionary);

} // namespace quorvane::platform
