#pragma once

#include <optional>
#include <string_view>

namespace quorvane::workflow {

// The state of a file whose write may have been interrupted.
enum class FileAfterWrite {
    asBefore,
    asMeant,
    cutShort, // a mixture that the interrupted write can have left
    foreign, // anything else: another program has written since
};

// How much of the old bytes was in the file.
enum class OldBytes { all, beginning };

// Compares the bytes of a file, `now`, with those `before` (none when unknown) and those being written over
// them, `meant`. A write overwrites the old bytes from the start and then truncates the file; a crash may
// leave zeros where bytes had not reached the disk. The file held only a beginning of the old bytes where
// their write was cut short itself. Pure.
FileAfterWrite fileAfterWrite(std::string_view now, std::optional<std::string_view> before,
    std::string_view meant, OldBytes old = OldBytes::all);

} // namespace quorvane::workflow
