#include "cli/CommandLine.h"
#include "platform/StandardStreams.h"

int main(int argumentCount, char** arguments)
{
    quorvane::secureStandardStreams();
    return quorvane::runCommandLine(argumentCount, arguments);
}
