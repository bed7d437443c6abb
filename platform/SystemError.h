#pragma once

#include <string>
#include <system_error>

namespace quorvane::platform {

// The error with that number, usually errno.
inline std::error_code systemError(int number)
{
    return {number, std::generic_category()};
}

// The system's text for an error, with its number: "No space left on device (28)".
inline std::string errorText(const std::error_code& error)
{
    return error.message() + " (" + std::to_string(error.value()) + ")";
}

} // namespace quorvane::platform
