#pragma once

#include "codesign/TrustAnchor.h"
#include "platform/FileRoot.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace quorvane::workflow {

// How far a team name in a signature is proven. Anyone can sign with any name under a private authority.
enum class TeamProof {
    proven,
    foreignRoot, // the signer's chain does not end in the platform vendor's root
    codeDiffers, // the code's pages could not be verified against the signature
};

// Facts about the file of a rule's program. Any thread.
class ProgramFacts {
public:
    ProgramFacts() = default;
    ProgramFacts(const ProgramFacts&) = delete;
    ProgramFacts& operator=(const ProgramFacts&) = delete;
    virtual ~ProgramFacts() = default;

    // True for anything at the path: a file, a folder, what a link leads to.
    virtual bool exists(const std::string& path) = 0;
    // True for a folder and for a link that leads to one.
    virtual bool isFolder(const std::string& path) = 0;

    // Digests of the whole file, lowercase hexadecimal; none when it cannot be read.
    virtual std::optional<std::string> sha1(const std::string& path) = 0;
    virtual std::optional<std::string> sha256(const std::string& path) = 0;

    // False when the program's file could not be read, so that nothing is known of its signature.
    virtual bool isReadable(const std::string& path) = 0;

    // The team that has signed the program; none when none is proven.
    virtual std::optional<std::string> team(const std::string& path) = 0;

    // How far the name from team() is proven; meaningless when that returns none. Reads the whole program.
    virtual TeamProof teamProof(const std::string& path) = 0;

    // Not 0 for a program of the operating system itself.
    virtual std::uint32_t platformIdentifier(const std::string& path) = 0;
};

// The facts of the files within a root. Digests and signatures are cached until the file changes, since a
// table of many rules for one large program would read it repeatedly.
std::unique_ptr<ProgramFacts> programFactsWithin(
    const platform::FileRoot& root, const codesign::TrustAnchor& vendor = codesign::platformRoot());

// Those of this machine.
ProgramFacts& programFactsOnDisk();

// Of no files at all: nothing exists.
ProgramFacts& programFactsOfNothing();

} // namespace quorvane::workflow
