#include "rules/KnownFile.h"

#include "rules/RulesFile.h"

#include <chrono>
#include <functional>
#include <string_view>
#include <system_error>

namespace quorvane {

namespace {

// Two changes within this time may leave a file with the same times. Whole seconds are a coarse file
// system's.
std::chrono::nanoseconds roughnessOfClock(std::chrono::nanoseconds time)
{
    return time % std::chrono::seconds(1) == std::chrono::nanoseconds(0) ? std::chrono::seconds(2)
                                                                         : KnownFile::usualRoughness;
}

std::size_t hashOf(const RulesFileText& text)
{
    return std::hash<std::string_view>{}(text.bytes());
}

} // namespace

KnownFile KnownFile::of(const std::string& path, const RulesFileText& text)
{
    KnownFile known{.path = path, .identity = text.identity()};
    if (!known.identity || known.identity->isMissing())
        return known;
    const std::chrono::nanoseconds changed(known.identity->changed);
    const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
    if (now - changed < roughnessOfClock(changed))
        known.hash = hashOf(text);
    return known;
}

bool KnownFile::isStillThere() const
{
    std::error_code error;
    if (!identity || FileIdentity::ofPath(path, error) != identity)
        return false;
    return !hash || hashOf(RulesFileText::read(path, std::chrono::milliseconds(0))) == *hash;
}

} // namespace quorvane
