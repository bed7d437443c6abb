#pragma once

#include "history/DigestedBytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvane::history {

// Who made a version: an action of one of our programs, its undo or redo, or another program.
enum class VersionKind { action, undo, redo, foreign };

// How far the write of a version got. Under way: it may not have reached the file. Recovered: it was
// interrupted and completed later.
enum class VersionState { done, underWay, recovered };

// The metadata of a version, without its contents. A value object.
struct JournalVersion {
    std::int64_t number = 0; // from 1, in the order of recording; never reused
    std::int64_t time = 0; // seconds since 1970, by the clock at that time
    std::optional<std::string> program{}; // none for another program's
    std::optional<std::string> action{}; // in words; none for another program's
    VersionKind kind = VersionKind::action;
    std::optional<std::int64_t> of{}; // the version that was undone or redone
    std::optional<std::int64_t> before{}; // the newest version at that time; it may have been forgotten
    VersionState state = VersionState::done;
    std::uint64_t rules = 0;
    std::uint64_t added = 0;
    std::uint64_t removed = 0;
    std::uint64_t changed = 0;
    std::uint64_t bytes = 0; // of the file
    std::string sha256{}; // of the file's bytes, lowercase hexadecimal
    bool hasMeant = false; // the intended rules are stored besides the file's bytes
    bool isReadable = true; // false once its contents were found damaged
};

// A version to be recorded. Texts are used during the call only.
struct NewVersion {
    std::optional<std::string> program;
    std::optional<std::string> action;
    VersionKind kind = VersionKind::action;
    std::optional<std::int64_t> of; // for undo and redo: the version undone or redone
    std::uint64_t rules = 0;
    std::uint64_t added = 0;
    std::uint64_t removed = 0;
    std::uint64_t changed = 0;
    DigestedBytes bytes; // the whole file
    std::optional<DigestedBytes> meant; // the intended rules, if the file's bytes cannot hold them
    // A hint: the bytes of the newest version, to save unpacking it. Checked, and ignored when wrong.
    std::optional<DigestedBytes> previousBytes;
    std::optional<std::int64_t> time; // seconds since 1970; now when there is none
};

// How much a journal keeps: every version of the last `days`, then one per hour for 30 days and one per day
// for a year, all within `bytes` of packed contents, oldest forgotten first. The newest version always stays.
struct JournalLimits {
    std::uint32_t days = 7;
    std::uint64_t bytes = std::uint64_t{1} << 30U;
};

} // namespace quorvane::history
