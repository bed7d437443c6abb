#pragma once

#include <optional>
#include <string_view>

namespace quorvane::workflow {

// What became of a file whose writing may have been cut short.
enum class FileAfterWrite {
    asBefore,
    asMeant,
    cutShort, // a mixture that the write can have left
    foreign, // something that no cut of this write explains: another program has written since
};

// Compares the bytes of a file, `now`, with those it had `before` (none when that is not known) and those
// that were being written over them, `meant`. A write goes over the old bytes from the beginning and then
// cuts the file to length; a crash may leave zeros where bytes had not reached the disk.
FileAfterWrite fileAfterWrite(
    std::string_view now, std::optional<std::string_view> before, std::string_view meant);

} // namespace quorvane::workflow
