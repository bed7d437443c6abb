#include "cli/CommandFiles.h"

#include "cli/Output.h"
#include "platform/OutputFile.h"
#include "platform/SystemError.h"

#include <utility>

#include <unistd.h>

#include <CLI/CLI.hpp>

namespace quorvane {

namespace {

std::optional<RulesInput> onlyText(RulesInput input)
{
    if (!input.textProblem())
        return input;
    complain(printable(*input.textProblem()));
    return std::nullopt;
}

} // namespace

std::optional<RulesInput> readText(const std::string& path, bool nullDeviceIsEmpty)
{
    return onlyText(RulesInput::read(path, nullDeviceIsEmpty));
}

std::optional<RulesInput> readStandardInput()
{
    return onlyText(RulesInput::readDescriptor(STDIN_FILENO, "standard input"));
}

void addOutOption(CLI::App& command, std::optional<std::string>& out, const std::string& help)
{
    command
        .add_option_function<std::string>(
            "-o", [&out](const std::string& path) { out = path; }, help)
        ->type_name("OUT");
}

bool writeResult(const std::string& path, std::string_view bytes)
{
    const std::error_code error = writeOutputFile(path, bytes);
    if (error)
        complain("cannot write '" + printable(path) + "': " + errorText(error));
    return !error;
}

} // namespace quorvane
