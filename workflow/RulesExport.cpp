#include "workflow/RulesExport.h"

#include <cstdlib> // mkstemp
#include <filesystem>
#include <system_error>

#include <unistd.h>

namespace quorvane {

void exportRulesFile(const std::string& source, const std::string& destination)
{
    if (isSameFile(source, destination))
        return;
    // Beside the destination first, which so is replaced whole or not at all.
    std::string copy = destination + ".XXXXXX";
    const int descriptor = mkstemp(copy.data());
    if (descriptor < 0)
        return;
    close(descriptor);
    std::error_code failure;
    std::filesystem::copy_file(source, copy, std::filesystem::copy_options::overwrite_existing, failure);
    if (!failure)
        std::filesystem::rename(copy, destination, failure);
    if (failure)
        unlink(copy.c_str());
}

bool isSameFile(const std::string& a, const std::string& b)
{
    std::error_code missing;
    return std::filesystem::equivalent(a, b, missing) && !missing;
}

} // namespace quorvane
