#pragma once

#include "rules/NullableText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::cli {

// The name of a member of a JSON object, which consists of letters.
class JsonKey {
public:
    template <std::size_t size>
    consteval JsonKey(const char (&name)[size]) // NOLINT(google-explicit-constructor)
        : m_length(size + before.size() + after.size() - 1)
    {
        static_assert(size <= longest);
        char* to = std::copy(before.begin(), before.end(), m_written.data());
        to = std::copy(name, name + size - 1, to);
        std::copy(after.begin(), after.end(), to);
    }

    std::string_view name() const
    {
        return written().substr(before.size(), m_length - before.size() - after.size());
    }
    // With the punctuation around it.
    std::string_view written() const { return {m_written.data(), m_length}; }

private:
    static constexpr std::string_view before = ",\"";
    static constexpr std::string_view after = "\":";
    static constexpr std::size_t longest = 32;

    std::array<char, longest + 4> m_written{};
    std::size_t m_length;
};

// A JSON object on one line, written key by key with the same bytes as jsonLine() for an object with these
// members, at least one. For output of many lines: without an object tree each takes a sixth of the time. One
// thread at a time.
class JsonLine {
public:
    // Begins a line at the end of `out`, to which nothing else may be appended before finish().
    explicit JsonLine(std::string& out)
        : m_out(out)
        , m_begin(out.size())
    {
    }

    // Adds a member, whose key must not be repeated.
    void add(const JsonKey& key, std::string_view text);
    void add(const JsonKey& key, const char* text) { add(key, std::string_view(text)); }
    void add(const JsonKey& key, const std::string& text) { add(key, std::string_view(text)); }
    void add(const JsonKey& key, const rules::NullableText& text);
    void add(const JsonKey& key, std::nullptr_t) { m_out.append(key.written()).append("null"); }
    void add(const JsonKey& key, bool value) { m_out.append(key.written()).append(value ? "true" : "false"); }
    // null for none.
    template <class Value> void add(const JsonKey& key, const std::optional<Value>& value)
    {
        if (value)
            add(key, *value);
        else
            add(key, nullptr);
    }
    template <std::integral Number> void add(const JsonKey& key, Number number)
    {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        m_out.append(key.written()).append(digits.data(), end);
    }

    // Ends the line, including the line feed. Nothing may be added after it.
    void finish()
    {
        m_out[m_begin] = '{'; // instead of the comma before the first key
        m_out.append("}\n");
    }

private:
    std::string& m_out;
    const std::size_t m_begin;
};

} // namespace quorvane::cli
