#pragma once

#include <string>

namespace quorvane::cli {

// A validator of an argument: returns the error; empty for letters of rwcmx.
inline std::string onlyOperationLetters(const std::string& text)
{
    return text.find_first_not_of("rwcmx") == std::string::npos
        ? ""
        : "'" + text + "' is not made of the letters rwcmx";
}

} // namespace quorvane::cli
