#pragma once

#include <string>
#include <string_view>

namespace quorvane::cli {

// Standard output, collected and written in large pieces. Remembers a failure, so that output is either
// complete or known not to be.
class Output {
public:
    void write(std::string_view text);

    // Writes what is left; false when any part of the output could not be written.
    bool finish();

private:
    void flush();

    std::string m_pending;
    bool m_failed = false;
};

// One line to standard error, after the program's name.
void printError(std::string_view message);

// `text` with control characters as escapes, so that a terminal only ever shows it.
std::string printable(std::string_view text);

} // namespace quorvane::cli
