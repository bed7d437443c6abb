#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quorvane {

// A regular expression from a bundle's resource seal, searched for in a path.
//
// Knows what such seals use: characters, ".", sets, groups, "|", "*", "+", "?", "^", "$" and "\" before a
// character. Searching takes time in proportion to pattern times text, whatever the pattern. Immutable; any
// thread.
class SealPattern {
public:
    // None for a pattern that is malformed, uses anything else, is longer than 1024 or nests groups deeper
    // than 16.
    static std::optional<SealPattern> compile(std::string_view pattern);

    bool isFoundIn(std::string_view text) const;

    // What one character of text costs at most, in steps.
    std::size_t cost() const { return m_program.size(); }

private:
    friend class SealPatternCompiler;

    enum class Step : std::uint8_t { characters, fork, atStart, atEnd, found };
    struct Instruction {
        Step step = Step::found;
        std::bitset<256> characters;
        std::size_t next = 0;
        std::size_t other = 0; // of a fork
    };
    struct Threads;

    SealPattern() = default;
    void follow(std::size_t instruction, std::size_t position, std::size_t length, Threads& threads) const;

    std::vector<Instruction> m_program;
    std::size_t m_start = 0;
};

} // namespace quorvane
