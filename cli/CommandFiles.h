#pragma once

#include "workflow/RulesInput.h"

#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

// Files that commands are given, with a complaint where something is wrong with them.

namespace quorvane::cli {

// None, after a complaint, when the file cannot be read or is no text.
std::optional<workflow::RulesInput> readText(const std::string& path, bool nullDeviceIsEmpty = false);

// None, after a complaint, when it cannot be read or is no text.
std::optional<workflow::RulesInput> readStandardInput();

// -o OUT: where a command is to write. An empty name is one as well, of no file.
void addOutOption(CLI::App& command, std::optional<std::string>& out, const std::string& help);

// False, after a complaint, when the file could not be written; it is then as it was.
bool writeResult(const std::string& path, std::string_view bytes);

} // namespace quorvane::cli
