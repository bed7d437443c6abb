#pragma once

#include "platform/FileIdentity.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::rules {

class RulesFileText;

// How a rules file was when it was read or written, to tell later whether it still is that. A value object.
struct KnownFile {
    // Two changes of a file within this time may bear the same time on usual file systems.
    static constexpr std::chrono::milliseconds usualRoughness{20};

    std::string path{};
    std::optional<platform::FileIdentity>
        identity{}; // none when it could not be looked at: then it is never the same
    // Of its bytes, where it was looked at so soon after a change that a later change may bear the same time.
    std::optional<std::size_t> hash{};

    // Of the file at `path`, from which `text` was read.
    static KnownFile of(const std::string& path, const RulesFileText& text);
    // Of the file at `path` when it holds exactly `bytes`; none when it holds others or cannot be read.
    static std::optional<KnownFile> ofFileWith(const std::string& path, std::string_view bytes);

    // True when the file is still the same. Reads it where there is a hash.
    bool isStillThere() const;
};

} // namespace quorvane::rules
