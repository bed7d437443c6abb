#include "cli/CommandFiles.h"

#include "cli/Output.h"
#include "platform/OutputFile.h"
#include "platform/SystemError.h"

#include <utility>

#include <unistd.h>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

std::optional<workflow::RulesInput> onlyText(workflow::RulesInput input)
{
    if (!input.textProblem())
        return input;
    printError(printable(*input.textProblem()));
    return std::nullopt;
}

// Words for the errors of writeOutputFile(), with its special ones for refused files.
std::string whyUnwritten(const std::error_code& error)
{
    if (error == std::errc::too_many_symbolic_link_levels)
        return "it is a symbolic link, through which nothing is written";
    if (error == std::errc::is_a_directory)
        return "it is a folder";
    return error == std::errc::operation_not_supported ? "it is no regular file" : platform::errorText(error);
}

} // namespace

std::optional<workflow::RulesInput> readText(const std::string& path, bool nullDeviceIsEmpty)
{
    return onlyText(workflow::RulesInput::read(path, nullDeviceIsEmpty));
}

std::optional<workflow::RulesInput> readStandardInput()
{
    return onlyText(workflow::RulesInput::readDescriptor(STDIN_FILENO, standardInputName));
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
    const std::error_code error = platform::writeOutputFile(path, bytes);
    if (error)
        printError("cannot write '" + printable(path) + "': " + whyUnwritten(error));
    return !error;
}

} // namespace quorvane::cli
