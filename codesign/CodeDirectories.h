#pragma once

#include "codesign/CodeDirectory.h"
#include "codesign/SignatureContainer.h"

#include <vector>

namespace quorvane::codesign {

// All CodeDirectories of a signature: the first one and its alternates by other hashes. Views of the
// container.
struct CodeDirectories {
    ValidityStatus status = status::unsignedCode; // unless valid, the rest must not be used
    std::vector<CodeDirectory> all; // in the order of the slots; the signer signed the first
    // The hash that identifies each of them: its own kind of hash over its whole blob. Empty for an unknown
    // kind.
    std::vector<HashValue> hashes;
    std::size_t best = 0; // the one with the strongest hash, which identifies the program

    const CodeDirectory& first() const { return all.front(); }
    const CodeDirectory& strongest() const { return all[best]; }
};

// Loads the CodeDirectories; a damaged one fails them all.
CodeDirectories loadCodeDirectories(const SignatureContainer& container);

// Hash lists truncate these hashes to this many bytes.
inline constexpr std::size_t listedHashLength = 20;

} // namespace quorvane::codesign
