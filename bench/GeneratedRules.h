#pragma once

#include <cstddef>
#include <string>

namespace quorvane::bench {

// A rules file of `count` rules about programs of `applications` applications, about 140 bytes a rule; the
// same for the same numbers. Rules of one application stand together, as the writer leaves them.
std::string generatedRules(std::size_t count, std::size_t applications);

} // namespace quorvane::bench
