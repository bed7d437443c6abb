#include "cli/Output.h"

#include "cli/EveryByte.h"
#include "platform/SystemError.h"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <unistd.h>

namespace quorvane::cli {

namespace {

constexpr std::size_t pieceSize = 1U << 16U;

bool isPrintableAscii(std::string_view text)
{
    return everyByte(text, [](unsigned char byte) { return byte >= ' ' && byte <= '~'; });
}

} // namespace

void Output::write(std::string_view text)
{
    m_pending.append(text);
    if (m_pending.size() >= pieceSize)
        flush();
}

bool Output::finish()
{
    flush();
    return !m_failed;
}

bool Output::finish(bool areRulesWritten)
{
    const bool isWhole = finish();
    if (!isWhole && areRulesWritten)
        printError("the rules are written all the same");
    return isWhole;
}

void Output::flush()
{
    std::string_view rest = m_pending;
    while (!rest.empty() && !m_failed) {
        const ssize_t written = ::write(STDOUT_FILENO, rest.data(), rest.size());
        if (written > 0) {
            rest.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            printError("cannot write the output: " + platform::errorText(platform::systemError(errno)));
            m_failed = true;
        }
    }
    m_pending.clear();
}

void printError(std::string_view message)
{
    std::fprintf(stderr, "quorvanectl: %.*s\n", static_cast<int>(message.size()), message.data());
}

std::string printable(std::string_view text)
{
    std::string shown;
    appendPrintable(shown, text);
    return shown;
}

void appendPrintable(std::string& out, std::string_view text)
{
    if (isPrintableAscii(text)) {
        out.append(text);
        return;
    }
    unsigned char before = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // U+0080 to U+009F, which terminals interpret too, are the bytes C2 80 to C2 9F.
        const bool isLateControl = std::exchange(before, byte) == 0xC2 && byte < 0xA0;
        if (byte >= 0x20 && byte != 0x7F && !isLateControl) {
            out.push_back(c);
            continue;
        }
        if (isLateControl)
            out.pop_back();
        char escaped[5];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
        out += escaped;
    }
}

} // namespace quorvane::cli
