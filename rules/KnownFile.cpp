#include "rules/KnownFile.h"

#include "platform/RegularFile.h"
#include "rules/RulesFile.h"

#include <chrono>
#include <functional>
#include <string_view>
#include <system_error>

#include <fcntl.h>

namespace quorvane::rules {

namespace {

// Two changes within this time may give a file the same time stamps. Whole seconds suggest a file system with
// coarse ones.
std::chrono::nanoseconds roughnessOfClock(std::chrono::nanoseconds time)
{
    return time % std::chrono::seconds(1) == std::chrono::nanoseconds(0) ? std::chrono::seconds(2)
                                                                         : KnownFile::usualRoughness;
}

using Clock = std::chrono::system_clock;

// `lookedAt`: a change after that time was not read.
KnownFile knownFile(const std::string& path, const std::optional<platform::FileIdentity>& identity,
    std::string_view bytes, Clock::time_point lookedAt)
{
    KnownFile known{.path = path, .identity = identity};
    if (!identity || identity->isMissing())
        return known;
    const std::chrono::nanoseconds changed(identity->changed);
    if (lookedAt.time_since_epoch() - changed < roughnessOfClock(changed))
        known.hash = std::hash<std::string_view>{}(bytes);
    return known;
}

} // namespace

KnownFile KnownFile::of(const std::string& path, const RulesFileText& text)
{
    return knownFile(path, text.identity(), text.bytes(), text.lookedAt());
}

// The identity is taken before reading: a change during the read is then noticed by the next check.
std::optional<KnownFile> KnownFile::ofFileWith(const std::string& path, std::string_view bytes)
{
    std::error_code error;
    const platform::FileDescriptor file = platform::openRegularFile(path, O_RDONLY | O_NOFOLLOW, error);
    if (!file)
        return std::nullopt;
    const Clock::time_point lookedAt = Clock::now(); // before reading, which may take long
    const auto identity = platform::FileIdentity::ofDescriptor(file.get(), error);
    if (!platform::holdsExactly(file.get(), bytes))
        return std::nullopt;
    return knownFile(path, identity, bytes, lookedAt);
}

bool KnownFile::isStillThere()
{
    std::error_code error;
    if (!identity || platform::FileIdentity::ofPath(path, error) != identity)
        return false;
    if (!hash)
        return true;
    const RulesFileText text = RulesFileText::read(path, std::chrono::milliseconds(0));
    if (text.identity() != identity || std::hash<std::string_view>{}(text.bytes()) != *hash)
        return false;
    hash = of(path, text).hash;
    return true;
}

} // namespace quorvane::rules
