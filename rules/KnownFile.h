#pragma once

#include "platform/FileIdentity.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::rules {

class RulesFileText;

// The state of a rules file when it was read or written, to detect later whether it has changed. A value
// object.
struct KnownFile {
    // Two changes of a file within this time may get the same time stamp on usual file systems.
    static constexpr std::chrono::milliseconds usualRoughness{20};

    std::string path{};
    std::optional<platform::FileIdentity>
        identity{}; // none when it could not be determined: then it always counts as changed
    // Of its bytes, if it was read so soon after a change that a later change may get the same time stamp.
    std::optional<std::size_t> hash{};

    // Of the file at `path`, from which `text` was read.
    static KnownFile of(const std::string& path, const RulesFileText& text);
    // Of the file at `path` if it holds exactly `bytes`; none if it holds others or cannot be read.
    static std::optional<KnownFile> ofFileWith(const std::string& path, std::string_view bytes);

    // True when the file is unchanged. Reads it if there is a hash, and drops that once a later change would
    // get another time stamp.
    bool isStillThere();
};

} // namespace quorvane::rules
