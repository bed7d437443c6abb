#pragma once

#include "history/JournalVersion.h"
#include "rules/RuleLine.h"

#include <optional>
#include <string>

namespace quorvane::workflow {

// The settings of our own programs, shared by window and command line. The product's preferences are in a
// separate property list. A value object.
struct ProgramSettings {
    bool wholeLines = false; // write lines of the rules file completely
    history::JournalLimits history;

    rules::LineEnds lineEnds() const { return wholeLines ? rules::LineEnds::whole : rules::LineEnds::cut; }
};

// settings.ini in "quorvane" in $XDG_CONFIG_HOME, else in ~/.config. Empty when there is no home folder
// either.
std::string defaultSettingsFile();

struct ReadProgramSettings {
    ProgramSettings settings;
    std::optional<std::string> problem; // in words: which part of the file could not be used
};

// The settings in `file`. A missing file yields the defaults; so does an unreadable one, and an invalid value
// yields that setting's default: both set `problem`. Any thread.
ReadProgramSettings readProgramSettings(const std::string& file);

// Writes `settings` to `file`, which is replaced atomically, and created with its folders when it is missing.
// Comments and all other lines stay. A file that is not text is first renamed with ".unread" appended.
// Returns why that failed; none on success.
std::optional<std::string> writeProgramSettings(const std::string& file, const ProgramSettings& settings);

} // namespace quorvane::workflow
