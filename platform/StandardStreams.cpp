#include "platform/StandardStreams.h"

#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace quorvane::platform {

void secureStandardStreams()
{
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(descriptor, F_GETFD) >= 0)
            continue;
        const int placeHolder = open("/dev/null", O_RDONLY);
        if (placeHolder >= 0 && placeHolder != descriptor) {
            dup2(placeHolder, descriptor);
            close(placeHolder);
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

} // namespace quorvane::platform
