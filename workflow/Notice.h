#pragma once

#include <string>

namespace quorvane::workflow {

// What a notice says.
struct Notice {
    std::string header;
    std::string message;
};

} // namespace quorvane::workflow
