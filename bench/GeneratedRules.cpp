#include "bench/GeneratedRules.h"

#include <algorithm>
#include <array>
#include <random>

namespace quorvane::bench {

namespace {

constexpr std::array folders{"Documents", "Library", "Application Support", "Caches", "Preferences",
    "Pictures", "work", "src", "build", "Projects", "Downloads", "data", "index", "cache", "archive",
    "music"};
constexpr std::array makers{"Photo", "Mail", "Note", "Code", "Sound", "Draw"};
constexpr std::array programs{"Studio", "Helper", "Agent", "Main"};
constexpr std::array operations{"r", "rw", "rwc", "rx", "rwcmx"};

class Dice {
public:
    std::size_t below(std::size_t bound) { return m_engine() % bound; }
    template <std::size_t size> std::string of(const std::array<const char*, size>& choices)
    {
        return choices[below(size)];
    }

private:
    std::mt19937 m_engine{7};
};

} // namespace

std::string generatedRules(std::size_t count, std::size_t applications)
{
    Dice dice;
    std::string text;
    std::string program;
    std::string constraint;
    std::size_t application = applications;
    for (std::size_t rule = 0; rule < count; ++rule) {
        const std::string number = std::to_string(rule);
        if (const std::size_t owner = rule * applications / count; owner != application) {
            application = owner;
            const std::string suffix = std::to_string(application);
            program = "/Applications/" + dice.of(makers) + suffix + ".app/Contents/MacOS/" + dice.of(programs)
                + suffix;
            constraint = dice.below(2) == 0 ? "" : "ABCDE12345";
        }
        std::string path = "/Users/ann";
        for (std::size_t depth = 1 + dice.below(3); depth > 0; --depth)
            path += "/" + dice.of(folders);
        path += "/" + dice.of(folders) + "-" + number;
        const bool isPrefix = dice.below(3) > 0;
        path += isPrefix ? "/" : ".txt";
        text += dice.below(4) == 0 ? "deny " : "allow ";
        text += isPrefix ? "prefix \"" : "path \"";
        text += path + "\" \"" + program + "\" " + dice.of(operations) + " \"tag" + std::to_string(rule % 17)
            + "\" \"" + constraint + "\" \"" + std::to_string(1478000000 + rule) + "\"\n";
    }
    return text;
}

} // namespace quorvane::bench
