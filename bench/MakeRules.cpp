#include "bench/GeneratedRules.h"

#include <cstdio>
#include <cstdlib>

// make_rules COUNT APPLICATIONS: prints a generated rules file.
int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::fputs("usage: make_rules COUNT APPLICATIONS\n", stderr);
        return 2;
    }
    const std::string text = quorvane::bench::generatedRules(
        std::strtoul(arguments[1], nullptr, 10), std::strtoul(arguments[2], nullptr, 10));
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() ? 0 : 1;
}
