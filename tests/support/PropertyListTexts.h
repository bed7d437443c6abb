#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <plist/plist.h>

namespace quorvane::test {

// An XML property list with the given root element.
inline std::string xmlRoot(const std::string& root)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">)"
        + root + "</plist>\n";
}

// The binary form of an XML property list.
inline std::string binaryOf(const std::string& xml)
{
    plist_t root = nullptr;
    plist_from_memory(xml.data(), static_cast<std::uint32_t>(xml.size()), &root);
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    std::string binary(bytes, length);
    plist_to_bin_free(bytes);
    plist_free(root);
    return binary;
}

// An XML property list and its binary form, for what both readers have to do alike.
inline std::array<std::string, 2> bothForms(const std::string& xml)
{
    return {xml, binaryOf(xml)};
}

} // namespace quorvane::test
