#include "rules/RuleCodes.h"

#include <array>

namespace quorvane::rules {

namespace {

constexpr std::array<std::string_view, 3> classTexts{"allow", "deny", "watch"};
constexpr std::array<std::string_view, 3> typeTexts{"prefix", "path", "suffix"};
constexpr std::string_view operationLetters = "rwcmx";
constexpr std::string_view flagLetters = "us";

template <std::size_t size>
std::string_view describe(const std::array<std::string_view, size>& texts, std::int32_t code)
{
    const auto index = static_cast<std::size_t>(static_cast<std::uint32_t>(code));
    return index < size ? texts[index] : "err";
}

std::string lettersForBits(std::string_view letters, std::int32_t bits)
{
    std::string text;
    for (std::size_t bit = 0; bit < letters.size(); ++bit) {
        if ((static_cast<std::uint32_t>(bits) >> bit & 1U) != 0)
            text.push_back(letters[bit]);
    }
    return text;
}

std::uint32_t bitsForLetters(std::string_view letters, std::string_view text)
{
    std::uint32_t bits = 0;
    for (const char c : text) {
        if (const std::size_t bit = letters.find(c); bit != std::string_view::npos)
            bits |= 1U << bit;
    }
    return bits;
}

} // namespace

std::string_view policyClassDescription(std::int32_t policyClass)
{
    return describe(classTexts, policyClass);
}

std::int32_t policyClassForString(std::string_view text)
{
    if (text == classTexts[PolicyClass::allow])
        return PolicyClass::allow;
    return text == classTexts[PolicyClass::deny] ? PolicyClass::deny : unknownCode;
}

std::string_view policyTypeDescription(std::int32_t policyType)
{
    return describe(typeTexts, policyType);
}

std::int32_t policyTypeForString(std::string_view text)
{
    for (std::size_t code = 0; code < typeTexts.size(); ++code) {
        if (text == typeTexts[code])
            return static_cast<std::int32_t>(code);
    }
    return unknownCode;
}

std::string operationsDescription(std::int32_t operations)
{
    return lettersForBits(operationLetters, operations);
}

std::uint32_t operationsForString(std::string_view text)
{
    return bitsForLetters(operationLetters, text);
}

std::string flagsDescription(std::int32_t flags)
{
    return lettersForBits(flagLetters.substr(0, 1), flags);
}

std::string flagsForInteger(std::int32_t flags)
{
    return lettersForBits(flagLetters, flags);
}

std::uint32_t flagsForString(std::string_view text)
{
    return bitsForLetters(flagLetters, text);
}

bool isBitwiseInclusive(std::uint32_t a, std::uint32_t b)
{
    return (b & ~a & 0xFFU) == 0;
}

} // namespace quorvane::rules
