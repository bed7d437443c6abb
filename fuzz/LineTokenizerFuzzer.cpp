#include "rules/LineTokenizer.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

// Compares the optimized tokenizer with a character-by-character implementation of the same rules.

namespace {

std::vector<std::string> tokensStepByStep(std::string_view line)
{
    std::vector<std::string> tokens;
    std::string run;
    std::string held;
    bool inQuotes = false;
    for (const char c : line) {
        if (c != ' ' && c != '"') {
            run.push_back(c);
            continue;
        }
        if (c == '"') {
            inQuotes = !inQuotes;
            if (run.empty() && !inQuotes)
                tokens.emplace_back();
            if (!run.empty()) {
                tokens.push_back(held + run);
                held.clear();
            }
        } else if (inQuotes) {
            held += run + ' ';
        } else if (!run.empty()) {
            tokens.push_back(run);
        }
        run.clear();
    }
    if (!run.empty())
        tokens.push_back(run);
    return tokens;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    if (quorvane::rules::scanString(line) != tokensStepByStep(line))
        std::abort();
    return 0;
}
