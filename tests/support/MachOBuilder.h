#pragma once

#include "tests/support/SignatureBuilder.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quorvane::test {

inline constexpr std::uint32_t arm64 = 0x0100000c;
inline constexpr std::uint32_t x86_64 = 0x01000007;
inline constexpr std::uint32_t powerPc = 18;

// A Mach-O program to be made: three pages and a bit of code, and a signature at the end.
struct ProgramPlan {
    bool is64Bit = true;
    codesign::ByteOrder order = codesign::ByteOrder::little;
    std::uint32_t cpuType = arm64;
    std::uint32_t fileType = 2;
    std::optional<codesign::Bytes> infoPlistSection;
    bool withLinkEdit = true; // else the symbol table defines the end of the file
    std::optional<SignaturePlan> signature = SignaturePlan();
};

// The offset of the signature in every program made here.
inline constexpr std::size_t codeLength = 3 * 4096 + 1000;
inline constexpr std::size_t signatureRoom = 65536;

codesign::Bytes makeProgram(const ProgramPlan& plan = {});

// A program without a signature.
codesign::Bytes makeUnsignedProgram(ProgramPlan plan = {});

struct SlicePlan {
    std::uint32_t cpuType;
    codesign::Bytes contents;
};

// A universal file; the slices begin at multiples of 16 KiB.
codesign::Bytes makeUniversal(const std::vector<SlicePlan>& slices, bool wide = false);

// The offset of the n-th slice of a universal file made here.
std::size_t sliceOffset(codesign::ByteView universal, std::size_t index);

} // namespace quorvane::test
