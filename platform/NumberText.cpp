#include "platform/NumberText.h"

#include <algorithm>
#include <limits>

namespace quorvane::platform {

std::int64_t leadingInteger(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+'))
        text.remove_prefix(1);
    // Accumulated negatively: the negative range holds one number more.
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            break;
        const int digit = c - '0';
        if (__builtin_mul_overflow(value, std::int64_t{10}, &value)
            || __builtin_sub_overflow(value, std::int64_t{digit}, &value)) {
            value = std::numeric_limits<std::int64_t>::min();
            break;
        }
    }
    if (negative)
        return value;
    return value == std::numeric_limits<std::int64_t>::min() ? std::numeric_limits<std::int64_t>::max()
                                                             : -value;
}

} // namespace quorvane::platform
