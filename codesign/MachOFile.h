#pragma once

#include "codesign/MachOSlice.h"

#include <optional>
#include <vector>

namespace quorvane::codesign {

// True when the first bytes of the file are those of a program: a Mach-O executable, library, loader, plug-in
// or kernel extension, alone or as the first architecture of a universal file.
bool isMachOProgram(const CodeFile& file);

// The architectures of a program file, and the one that queries refer to. Immutable; any thread.
class MachOFile {
public:
    // None when the universal header is rejected (no architecture, or more than a hundred), the file is
    // larger than any program, or the chosen slice cannot be read.
    static std::optional<MachOFile> read(const CodeFile& file);

    // The arm64 slice, else the x86_64 one, else the first; the same on every machine.
    const MachOSlice& slice() const { return m_slice; }

    // True when every architecture is sound, none overlap or exceed the file, and only zero bytes are between
    // them. Reads the gaps of the file.
    bool structureIsSound(const CodeFile& file) const;

private:
    struct Architecture {
        std::uint32_t cpuType = 0;
        std::uint64_t offset = 0;
        std::uint64_t length = 0;
        std::uint32_t align = 0; // base-2 logarithm
    };
    bool readArchitectures(const CodeFile& file);
    Architecture chosenArchitecture(const CodeFile& file) const;
    bool gapIsSound(const CodeFile& file, std::uint64_t begin, const Architecture& next, bool first) const;

    std::vector<Architecture> m_architectures; // empty for a thin file
    std::uint64_t m_headerEnd = 0; // of the universal header
    MachOSlice m_slice;
};

} // namespace quorvane::codesign
