#pragma once

#include "rules/NullableText.h"

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace quorvane::cli {

// A JSON object on a line of its own, printed key by key in the bytes that jsonLine() makes of an object with
// these members. For output of many lines: without the object each takes a sixth of the time.
class JsonLine {
public:
    // A key of letters alone, once.
    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, const char* text) { add(key, std::string_view(text)); }
    void add(std::string_view key, const std::string& text) { add(key, std::string_view(text)); }
    void add(std::string_view key, const rules::NullableText& text);
    void add(std::string_view key, std::nullptr_t);
    void add(std::string_view key, bool value);
    template <std::integral Number> void add(std::string_view key, Number number)
    {
        addKey(key);
        m_line += std::to_string(number);
    }

    // With the line feed. Nothing can be added after it.
    std::string finish();

private:
    void addKey(std::string_view key);

    std::string m_line = "{";
};

} // namespace quorvane::cli
