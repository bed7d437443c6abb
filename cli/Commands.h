#pragma once

#include "cli/Command.h"

#include <memory>

// The commands of quorvanectl, each in a file of its own.

namespace quorvane::cli {

// Prints the rows.
std::unique_ptr<Command> makeListCommand();
// Prints the options in the store's order, duplicates included.
std::unique_ptr<Command> makeOptionsCommand();
// Writes all user rules, or the rows given in that order, to a file.
std::unique_ptr<Command> makeExportCommand();
// Adds a rule to the current user's configuration and writes it.
std::unique_ptr<Command> makeAddCommand();
// Deletes the first equal rule of the current user's configuration and writes it.
std::unique_ptr<Command> makeDeleteCommand();
// Changes many of the current user's rules at once.
std::unique_ptr<Command> makeSetCommand();
// Removes many of them at once.
std::unique_ptr<Command> makeRemoveCommand();
// Makes the rules of one program those of another.
std::unique_ptr<Command> makeMoveCommand();
// Prints the rules that are about a path.
std::unique_ptr<Command> makeTouchingCommand();
// Adds the rules of an exchange file to the current user's configuration, as an import review does with every
// row ticked, and writes it.
std::unique_ptr<Command> makeImportCommand();
// Prints the versions of the current user's rules, or what one of them changed.
std::unique_ptr<Command> makeHistoryCommand();
// Puts an earlier version in force again.
std::unique_ptr<Command> makeRestoreCommand();
// Takes back the newest action that is not undone.
std::unique_ptr<Command> makeUndoCommand();
// Does again what was undone last.
std::unique_ptr<Command> makeRedoCommand();
// Makes the current user's configuration hold the rules of a file, or none of them.
std::unique_ptr<Command> makeApplyCommand();
// Prints what is worth telling of the user's rules, or of those of many files.
std::unique_ptr<Command> makeCheckCommand();
// Prints the rules by which a rules file differs from another.
std::unique_ptr<Command> makeDiffCommand();
// Merges what two sides did to a rules file.
std::unique_ptr<Command> makeMergeCommand();
// Prints the rules of joined lines, and takes them apart.
std::unique_ptr<Command> makeRescueCommand();
// Lets git merge and compare rules files by their rules.
std::unique_ptr<Command> makeGitSetupCommand();
// Prints what the code signatures of programs, then of running processes, say.
std::unique_ptr<Command> makeCodesignCommand();
// Prints the digests of files, of all that can be read.
std::unique_ptr<Command> makeDigestCommand();
// Writes a page of map, problems and rules.
std::unique_ptr<Command> makeReportCommand();
// Prints the completion script of a shell.
std::unique_ptr<Command> makeCompletionCommand();

} // namespace quorvane::cli
