#pragma once

#include "rules/NullableText.h"
#include "workflow/ProgramFacts.h"

#include <string>

// What pins a rule to the program that it is for, as the program is now.

namespace quorvane::workflow {

// The path of the program that decides about a rule's constraint: the process's own, or the parent's for any
// process; empty when there is none.
std::string decidingProgram(const rules::NullableText& process);

struct ProgramBinding {
    // Whether the program could be looked at.
    enum Program { seen, gone, unreadable };
    Program program = seen;
    // The team, the marker of the operating system's own programs, or the SHA-256; empty for a program that
    // cannot be bound to anything.
    std::string constraint{};
};

// May read the whole program file.
ProgramBinding bindingOf(const std::string& program, ProgramFacts& facts);

} // namespace quorvane::workflow
