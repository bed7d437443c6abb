#pragma once

#include <string>

namespace quorvane {

// What a notice says.
struct Notice {
    std::string header;
    std::string message;
};

} // namespace quorvane
