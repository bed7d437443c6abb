#include "platform/NumberText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string_view>

namespace quorvane::platform {

TEST(LeadingInteger, ReadsBlanksASignAndDigits)
{
    constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
    const struct {
        const char* why;
        std::string_view text;
        std::int64_t number;
    } cases[] = {
        {"plain digits", "1478000000", 1478000000},
        {"leading zeros", "007", 7},
        {"nothing", "", 0},
        {"no digits", "abc", 0},
        {"blanks only", "   ", 0},
        {"a sign only", "-", 0},
        {"leading blanks of every kind", " \t\n\v\f\r42", 42},
        {"a minus", "-5", -5},
        {"a plus", "+5", 5},
        {"blanks before the sign", "  -5", -5},
        {"no blank after the sign", "- 5", 0},
        {"one sign only", "--5", 0},
        {"what follows the digits is ignored", "12abc34", 12},
        {"no fraction", "3.99", 3},
        {"no hexadecimal", "0x10", 0},
        {"no other digits than ASCII ones", "\xD9\xA1", 0},
        {"the largest number", "9223372036854775807", largest},
        {"one more is held at the largest", "9223372036854775808", largest},
        {"many more are held at the largest", "99999999999999999999999999", largest},
        {"the smallest number", "-9223372036854775808", smallest},
        {"one less is held at the smallest", "-9223372036854775809", smallest},
        {"many less are held at the smallest", "-99999999999999999999999999", smallest},
        {"the number next to the smallest", "-9223372036854775807", smallest + 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(leadingInteger(c.text), c.number) << c.why;
}

TEST(LeadingInteger, StopsAtANulByte)
{
    EXPECT_EQ(leadingInteger(std::string_view("1\0002", 3)), 1);
}

} // namespace quorvane::platform
