#pragma once

#include "workflow/RulesInput.h"

#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

// Reading and writing the files of commands, with errors printed.

namespace quorvane::cli {

// None, with an error printed, when the file cannot be read or is not text.
std::optional<workflow::RulesInput> readText(const std::string& path, bool nullDeviceIsEmpty = false);

// None, with an error printed, when it cannot be read or is not text.
std::optional<workflow::RulesInput> readStandardInput();
inline const std::string standardInputName = "standard input"; // in messages

// -o OUT: the output file. An empty name counts as given, but names no file.
void addOutOption(CLI::App& command, std::optional<std::string>& out, const std::string& help);

// False, with an error printed, when the file could not be written; it is then unchanged.
bool writeResult(const std::string& path, std::string_view bytes);

} // namespace quorvane::cli
