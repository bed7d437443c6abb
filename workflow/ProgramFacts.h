#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvane {

// What a rule's program is asked about its file. Main thread only.
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

    // Digests of the whole file, of empty input when it cannot be read; lowercase hexadecimal.
    virtual std::string sha1(const std::string& path) = 0;
    virtual std::string sha256(const std::string& path) = 0;

    // False when the program's file could not be read, so that nothing is known of its signature.
    virtual bool isReadable(const std::string& path) = 0;

    // The team that has signed the program; none when none is proven.
    virtual std::optional<std::string> team(const std::string& path) = 0;

    // Not 0 for a program of the operating system itself.
    virtual std::uint32_t platformIdentifier(const std::string& path) = 0;
};

// The facts of this machine's files. A digest or signature is remembered until the file changes, since a
// table of many rules for one large program would read it again and again.
ProgramFacts& programFactsOnDisk();

} // namespace quorvane
