#pragma once

namespace quorvane::platform {

// Makes standard output and error safe to have. One that is closed gets a place holder, to which every write
// fails, so that no file opened later takes its place; and writing, to whatever file, fails instead of ending
// the process where the reader is gone or the allowed size of a file is reached. Called first of all, before
// another thread runs. A closed standard input is left alone: a rules file that would take its place counts
// as unreadable.
void secureStandardStreams();

} // namespace quorvane::platform
