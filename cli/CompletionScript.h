#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace quorvane::cli {

// The completion script of "bash", "zsh" or "fish" for a program, generated from its description; none for
// another shell. The script gets tags, processes, programs and paths of the current rules from the program
// itself, by "completion --values".
std::optional<std::string> completionScript(const CLI::App& program, std::string_view shell);

} // namespace quorvane::cli
