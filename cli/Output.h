#pragma once

#include <string>
#include <string_view>

namespace quorvane::cli {

// Standard output, buffered and written in large chunks. Remembers a failure, so that output is either
// complete or known to be incomplete. One thread at a time.
class Output {
public:
    void write(std::string_view text);

    // Writes the rest; false when any part of the output could not be written.
    bool finish();
    // The same; also says that the rules are written, if they are, when the output fails.
    bool finish(bool areRulesWritten);

private:
    void flush();

    std::string m_pending;
    bool m_failed = false;
};

// One line to standard error, after the program's name.
void printError(std::string_view message);

// `text` with control characters escaped, so that a terminal does not interpret them.
std::string printable(std::string_view text);
// The same, appended to `out`.
void appendPrintable(std::string& out, std::string_view text);

} // namespace quorvane::cli
