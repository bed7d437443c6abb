#pragma once

namespace quorvane::platform {

// Makes standard output and error safe to use. A closed one gets a placeholder to which every write fails, so
// that no file opened later reuses its descriptor; and a write to a closed pipe or beyond the file size limit
// fails instead of ending the process by a signal. Call it first, before another thread runs. A closed
// standard input is left alone: a rules file that got its descriptor counts as unreadable.
void secureStandardStreams();

} // namespace quorvane::platform
