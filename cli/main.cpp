#include "cli/CommandLine.h"
#include "cli/Output.h"
#include "platform/StandardStreams.h"

#include <cstdlib>
#include <exception>
#include <new>

namespace {

// Memory may run out where no exception can be handled, as in a library's destructor.
[[noreturn]] void endWithoutMemory()
{
    try {
        if (std::current_exception())
            std::rethrow_exception(std::current_exception());
    } catch (const std::bad_alloc&) {
        quorvane::cli::printError("out of memory");
        std::_Exit(quorvane::cli::statusWithoutMemory());
    } catch (...) { // a bug in the program
    }
    std::abort();
}

} // namespace

int main(int argumentCount, char** arguments)
{
    std::set_terminate(endWithoutMemory);
    quorvane::platform::secureStandardStreams();
    return quorvane::cli::runCommandLine(argumentCount, arguments);
}
