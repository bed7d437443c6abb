#pragma once

#include "platform/PropertyValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace quorvane::platform {

// A property list whose root is a dictionary, its values read as the Foundation framework reads them.
//
// XML and binary lists up to 16 MiB are understood (PropertyListReader.h says which); the old text form is
// not. What is written is XML. A value that was read, of whatever type, is kept until it is set; a date loses
// its fraction of a second in XML, which has none. One thread at a time.
class PropertyList {
public:
    // An empty dictionary.
    PropertyList() = default;

    // None when the file is missing, unreadable, damaged, too large or its root is not a dictionary.
    static std::optional<PropertyList> read(const std::string& path);
    // `error`: why the file could not be opened or read, ENOENT included; no error when it could be read.
    static std::optional<PropertyList> read(const std::string& path, std::error_code& error);
    static std::optional<PropertyList> parse(std::string_view bytes);

    // True for the boolean true, a number other than 0, and a string that begins (after blanks, a sign and
    // zeros) with Y, y, T, t or a digit from 1 to 9. False for everything else, a missing key included.
    bool boolForKey(const std::string& key) const;

    // None unless the key has a string.
    std::optional<std::string> stringForKey(const std::string& key) const;

    // A boolean is 0 or 1, a real is truncated, a string is read by its leading digits and clamped to 32
    // bits, an integer beyond 32 bits keeps its low 32. 0 for everything else, a missing key included.
    std::int32_t integerForKey(const std::string& key) const;

    // Replace the key's value, of whatever type. A new key goes to the end.
    void setBool(const std::string& key, bool value);
    void setInteger(const std::string& key, std::int32_t value);

    // Keys with their values, in the order of the file.
    const PropertyValue::Dictionary& entries() const { return *m_root.as<PropertyValue::Dictionary>(); }

    // The bytes of the file: XML, or the binary form when XML cannot hold a text of the list (with a control
    // character, say) or would be too large to read back. None when both would be.
    std::optional<std::string> fileBytes() const;

    // The list in one line, for the log: {"key" = 1; ...}. Truncated after 64 KiB.
    std::string description() const;

    // Writes the list in place; an existing file keeps its inode and permissions. False when the file cannot
    // be written, and when read() would refuse the result, in which case the file is unchanged. A symbolic
    // link is refused.
    bool writeToFile(const std::string& path) const;

private:
    explicit PropertyList(PropertyValue root);
    void set(const std::string& key, PropertyValue value);

    PropertyValue m_root{PropertyValue::Dictionary()};
};

} // namespace quorvane::platform
