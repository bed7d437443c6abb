#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane {

// A property list whose root is a dictionary, read as the Foundation framework reads its values.
//
// XML (UTF-8, and UTF-16 with a byte order mark) and binary are understood; the old text form is not.
// Not for two threads at once.
class PropertyList {
public:
    // None when the file is missing, unreadable, damaged, larger than 128 KiB or has another root than a
    // dictionary.
    static std::optional<PropertyList> read(const std::string& path);
    static std::optional<PropertyList> parse(std::string_view bytes);

    // True for the boolean true, a number other than 0, and a string that begins (after blanks, a sign and
    // zeros) with Y, y, T, t or a digit from 1 to 9. False for everything else, a missing key included.
    bool boolForKey(const std::string& key) const;

    // None unless the key has a string.
    std::optional<std::string> stringForKey(const std::string& key) const;

    // A boolean is 0 or 1, a real is cut, a string is read by its leading digits and held within 32 bits, a
    // number beyond 32 bits keeps its low 32. 0 for everything else, a missing key included.
    std::int32_t integerForKey(const std::string& key) const;

private:
    using Node = void*;
    explicit PropertyList(std::shared_ptr<void> root);
    Node nodeForKey(const std::string& key) const;

    std::shared_ptr<void> m_root;
};

} // namespace quorvane
