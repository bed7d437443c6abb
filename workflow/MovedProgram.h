#pragma once

#include "workflow/RulesPlace.h"

#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

// Finds where the program of rules may be now, if it moved or has other versions.

namespace quorvane::workflow {

struct ProgramCandidate {
    // Why it may be the one, best reason first.
    enum Reason {
        sameConstraint, // it has the digest or team that constraints of the program's rules demand
        otherVersion, // its path differs only in version numbers
    };
    std::string path;
    Reason reason;

    bool operator==(const ProgramCandidate&) const = default;
};

// A few words: "another version".
std::string_view candidateReasonWords(ProgramCandidate::Reason reason);

// The programs that rules of the program at `path` may be meant for now, best first and newest version first;
// at most 20. `constraints` are those of its rules. Searches for other versions beside it, and for programs
// of the same name and constraint also one folder up or down and in the usual places.
//
// Bounded: checks at most some thousand names and reads some dozen files, all of them in `place`. When it is
// stopped, returns what was found so far. Any thread.
std::vector<ProgramCandidate> candidatesForMoved(const std::string& path,
    const std::vector<std::string>& constraints, const RulesPlace& place, const std::stop_token& stop = {});

// The path in a process string: of its program, or of the parent or ancestor of any program; empty when it
// matches every process.
std::string namedProgram(std::string_view process);

} // namespace quorvane::workflow
