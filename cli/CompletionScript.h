#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace quorvane::cli {

// The completion script of "bash", "zsh" or "fish" for a program, made of its description; none for another
// shell. Tags, processes, programs and paths of the present rules are asked of the program itself, by
// "completion --values".
std::optional<std::string> completionScript(const CLI::App& program, std::string_view shell);

} // namespace quorvane::cli
