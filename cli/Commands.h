#pragma once

#include "cli/RuleSelection.h"

#include <cstdint>
#include <string>
#include <vector>

// The commands of quorvanectl. Each returns the exit status: 0, or 1 after a failure or, of check, for
// findings.

namespace quorvane {

struct CommandContext {
    const Locations& locations;
    Log& log;
};

// Prints the rows.
int listCommand(const CommandContext& context, const RuleSelection& selection, bool asJson);

// Prints the options in the store's order, duplicates included.
int optionsCommand(const CommandContext& context, bool asJson);

// Writes all user rules, or the rows given in that order, to a file.
int exportCommand(const CommandContext& context, const RuleSelection& selection, const std::string& out,
    const std::vector<std::size_t>& rows);

// Prints what is worth telling of the user's rules.
int checkCommand(const CommandContext& context, const RuleSelection& selection, bool asJson);

// A rule as the command line spells it.
struct SpelledRule {
    std::string ruleClass; // "allow", "deny" or "watch"
    std::string type; // "prefix", "path" or "suffix"
    std::string path;
    std::string process;
    std::string operations; // letters out of "rwcmx"
    std::string tag;
    std::string constraint;
};

// Adds the rule to the current user's configuration and writes it.
int addCommand(const CommandContext& context, const SpelledRule& rule);

// Deletes the first equal rule of the current user's configuration and writes it.
int deleteCommand(const CommandContext& context, const SpelledRule& rule);

// Adds the rules of an exchange file to the current user's configuration, as an import review does with every
// row ticked, and writes it.
int importCommand(const CommandContext& context, const std::string& file, bool asJson);

// Prints what the code signatures of programs, then of running processes, say.
int codesignCommand(
    const std::vector<std::string>& paths, const std::vector<std::int32_t>& pids, bool asJson);

// Prints the digests of files, of all that can be read.
int digestCommand(const std::vector<std::string>& paths);

} // namespace quorvane
