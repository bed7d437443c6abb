#include "cli/CommandLine.h"

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A file that is opened must never take the place of a closed standard output or error.
void keepClosed(int descriptor)
{
    if (fcntl(descriptor, F_GETFD) >= 0)
        return;
    const int placeholder = open("/dev/null", O_RDONLY);
    if (placeholder >= 0 && placeholder != descriptor) {
        dup2(placeholder, descriptor);
        close(placeholder);
    }
}

} // namespace

int main(int argumentCount, char** arguments)
{
    keepClosed(STDOUT_FILENO);
    keepClosed(STDERR_FILENO);
    std::signal(SIGPIPE, SIG_IGN); // a closed output is a failure that is told
    return quorvane::runCommandLine(argumentCount, arguments);
}
