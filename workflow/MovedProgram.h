#pragma once

#include "workflow/RulesPlace.h"

#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

// Where the program of rules may be now that it is no longer, or no longer alone, where they say.

namespace quorvane::workflow {

struct ProgramCandidate {
    // Why it may be the one, the better reason first.
    enum Reason {
        sameConstraint, // it has the digest or the team that rules of the program are bound to
        otherVersion, // its path differs in numbers of versions alone
    };
    std::string path;
    Reason reason;

    bool operator==(const ProgramCandidate&) const = default;
};

// A few words: "another version".
std::string_view candidateReasonWords(ProgramCandidate::Reason reason);

// The programs that rules of the program at `path` may have to be for, the best first and of versions the
// newest; 20 at most. `constraints` are those of its rules. Other versions are looked for beside it; what has
// the same constraint also a folder further, and where programs usually are, under the same name.
//
// Bounded: looks at some thousand names and reads some dozen files at most, all of them in `place`. What was
// found until then when it is stopped. Any thread.
std::vector<ProgramCandidate> candidatesForMoved(const std::string& path,
    const std::vector<std::string>& constraints, const RulesPlace& place, const std::stop_token& stop = {});

// The path that a process names: of its program, or of the parent or ancestor of any program; empty for every
// process.
std::string namedProgram(std::string_view process);

} // namespace quorvane::workflow
