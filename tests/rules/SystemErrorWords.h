#pragma once

#include <cstring>
#include <string>

namespace quorvane::test {

// The end of messages about a system error: "No such file or directory (2)".
inline std::string systemErrorWords(int number)
{
    return std::string(std::strerror(number)) + " (" + std::to_string(number) + ")";
}

} // namespace quorvane::test
