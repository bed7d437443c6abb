#pragma once

#include "rules/NullableText.h"
#include "workflow/ProgramFacts.h"

#include <string>

// The constraint that binds a rule to its program in its current state. Any thread.

namespace quorvane::workflow {

// The path of the program that determines a rule's constraint: the process's own, or the parent's for any
// process; empty when there is none.
std::string decidingProgram(const rules::NullableText& process);

struct ProgramBinding {
    // Whether the program could be read.
    enum Program { seen, gone, unreadable };
    Program program = seen;
    // The team, the marker of the operating system's programs, or the SHA-256; empty for a program that
    // cannot be bound.
    std::string constraint{};
};

// May read the whole program file.
ProgramBinding bindingOf(const std::string& program, ProgramFacts& facts);

} // namespace quorvane::workflow
