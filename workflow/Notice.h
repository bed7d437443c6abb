#pragma once

#include <string>

namespace quorvane::workflow {

// The texts of a notice, UTF-8.
struct Notice {
    std::string header;
    std::string message;
};

} // namespace quorvane::workflow
