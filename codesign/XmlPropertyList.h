#pragma once

#include "codesign/ByteView.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvane {

// A value of a property list.
struct PropertyValue {
    enum class Kind { dictionary, array, string, data, boolean, other };

    Kind kind = Kind::other;
    bool flag = false; // of a boolean
    std::string text; // of a string; the bytes of data; a number or date as it is written
    std::vector<std::string> keys; // of a dictionary, one for each item
    std::vector<PropertyValue> items; // of a dictionary or array

    // The first value under `key`; null when there is none or this is no dictionary.
    const PropertyValue* find(std::string_view key) const;
};

// Reads an XML property list from a foreign file, in time that grows with its length only.
//
// Written here because the common libraries answer some hostile lists with a stack overflow or quadratic
// time. None for what is no property list in UTF-8, nests deeper than 32, holds more than a million values,
// or declares entities.
std::optional<PropertyValue> parseXmlPropertyList(ByteView bytes);

} // namespace quorvane
