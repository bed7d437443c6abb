#pragma once

#include "history/JournalVersion.h"
#include "rules/RuleLine.h"

#include <optional>
#include <string>

namespace quorvane::workflow {

// The settings of the programs themselves, which window and command line share. The product's preferences are
// in a property list of their own.
struct ProgramSettings {
    bool wholeLines = false; // lines of the rules file are written with all of their bytes
    history::JournalLimits history;

    rules::LineEnds lineEnds() const { return wholeLines ? rules::LineEnds::whole : rules::LineEnds::cut; }
};

// settings.ini in "quorvane" in $XDG_CONFIG_HOME, else in ~/.config. Empty when there is no home folder
// either.
std::string defaultSettingsFile();

struct ReadProgramSettings {
    ProgramSettings settings;
    std::optional<std::string> problem; // in words: what of the file could not be used
};

// The settings in `file`. A missing file means the defaults; so does one that cannot be read, and a broken
// value means that setting's default: both are told. Any thread.
ReadProgramSettings readProgramSettings(const std::string& file);

// Puts `settings` into `file`, which is replaced whole or not at all, and made with its folders when it is
// missing. Comments and whatever else is in it stay. A file that is no text is set aside first, with
// ".unread" after its name. Returns why that failed; none when it did not.
std::optional<std::string> writeProgramSettings(const std::string& file, const ProgramSettings& settings);

} // namespace quorvane::workflow
