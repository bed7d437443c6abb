#pragma once

#include <string>

namespace quorvane {

// Copies the rules file at `source` to `destination`, byte for byte, in place of whatever file is there. When
// it cannot be read or copied whole, `destination` stays what it was. Nothing happens when both are the same
// file. Any thread.
void exportRulesFile(const std::string& source, const std::string& destination);

// True when both paths lead to the same file.
bool isSameFile(const std::string& a, const std::string& b);

} // namespace quorvane
