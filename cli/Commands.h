#pragma once

#include "cli/Command.h"

#include <memory>

// The commands of quorvanectl, each in a separate file. Never null.

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
// Changes the rules of one program to another.
std::unique_ptr<Command> makeMoveCommand();
// Prints the rules that apply to a path.
std::unique_ptr<Command> makeTouchingCommand();
// Adds the rules of an exchange file to the current user's configuration, like an import review with every
// row ticked, and writes it.
std::unique_ptr<Command> makeImportCommand();
// Prints the versions of the current user's rules, or what one of them changed.
std::unique_ptr<Command> makeHistoryCommand();
// Restores an earlier version.
std::unique_ptr<Command> makeRestoreCommand();
// Undoes the newest action that is not undone.
std::unique_ptr<Command> makeUndoCommand();
// Redoes the action undone last.
std::unique_ptr<Command> makeRedoCommand();
// Ensures that the current user's configuration contains the rules of a file, or none of them.
std::unique_ptr<Command> makeApplyCommand();
// Prints the findings of the user's rules, or of those of several files.
std::unique_ptr<Command> makeCheckCommand();
// Prints the rules in which two rules files differ.
std::unique_ptr<Command> makeDiffCommand();
// Merges the changes of two sides to a rules file.
std::unique_ptr<Command> makeMergeCommand();
// Prints the rules of joined lines, and separates them.
std::unique_ptr<Command> makeRescueCommand();
// Configures git to merge and compare rules files by their rules.
std::unique_ptr<Command> makeGitSetupCommand();
// Prints the code signatures of programs, then of running processes.
std::unique_ptr<Command> makeCodesignCommand();
// Prints the digests of all readable files.
std::unique_ptr<Command> makeDigestCommand();
// Writes a report page with map, problems and rules.
std::unique_ptr<Command> makeReportCommand();
// Prints the completion script of a shell.
std::unique_ptr<Command> makeCompletionCommand();

} // namespace quorvane::cli
