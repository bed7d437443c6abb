#pragma once

#include <cstddef>
#include <string>

namespace quorvane::bench {

// A rules file of `count` rules about programs of `applications` applications, about 140 bytes per rule;
// deterministic. Rules of one application are adjacent, as in a written file.
std::string generatedRules(std::size_t count, std::size_t applications);

} // namespace quorvane::bench
