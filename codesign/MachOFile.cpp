#include "codesign/MachOFile.h"

#include <algorithm>
#include <array>

namespace quorvane::codesign {

namespace {

constexpr std::uint32_t universalMagic = 0xcafebabe;
constexpr std::uint32_t universal64Magic = 0xcafebabf;
constexpr std::uint32_t mostArchitectures = 100;
constexpr std::uint32_t arm64Cpu = 0x0100000c;
constexpr std::uint32_t x86Cpu = 0x01000007;
constexpr std::size_t universalHeaderSize = 8;

// Many times the largest program, yet few enough bytes to hash while the user waits.
constexpr std::uint64_t largestProgram = 16ULL << 30U;

bool isUniversal(std::uint32_t magic)
{
    return magic == universalMagic || magic == universal64Magic;
}

std::uint64_t entrySize(std::uint32_t magic)
{
    return magic == universalMagic ? 20 : 32;
}

bool isProgramType(std::uint32_t fileType)
{
    // executable, preloaded, library, loader, plug-in, kernel extension
    constexpr std::array<std::uint32_t, 6> types{2, 5, 6, 7, 8, 11};
    return std::find(types.begin(), types.end(), fileType) != types.end();
}

} // namespace

bool isMachOProgram(const CodeFile& file)
{
    std::uint64_t offset = 0;
    // A universal header may point at another one, or at itself.
    for (int universalHeaders = 0; universalHeaders <= 3; ++universalHeaders) {
        const auto header = file.bytes(offset, machHeaderPrefix, machHeaderPrefix);
        if (!header)
            return false;
        const ByteView bytes(*header);
        if (const auto type = machOFileType(bytes))
            return isProgramType(*type);
        if (!isUniversal(bytes.u32(0)))
            return false;
        const std::uint64_t at = universalHeaderSize + 8;
        offset = bytes.u32(0) == universalMagic ? bytes.u32(at) : bytes.u64(at);
    }
    return false;
}

// False when the universal header is refused; a thin file has no architectures.
bool MachOFile::readArchitectures(const CodeFile& file)
{
    const auto header = file.bytes(0, universalHeaderSize, universalHeaderSize);
    const std::uint32_t magic = header ? ByteView(*header).u32(0) : 0;
    if (!isUniversal(magic))
        return true;
    const std::uint32_t count = ByteView(*header).u32(4);
    if (count == 0 || count > mostArchitectures)
        return false;
    const auto bytes
        = file.bytes(universalHeaderSize, count * entrySize(magic), mostArchitectures * entrySize(magic));
    if (!bytes)
        return false;
    const ByteView entries(*bytes);
    for (std::uint64_t at = 0; at < entries.size(); at += entrySize(magic)) {
        if (magic == universalMagic)
            m_architectures.push_back(
                {entries.u32(at), entries.u32(at + 8), entries.u32(at + 12), entries.u32(at + 16)});
        else
            m_architectures.push_back(
                {entries.u32(at), entries.u64(at + 8), entries.u64(at + 16), entries.u32(at + 24)});
    }
    m_headerEnd = universalHeaderSize + entries.size();
    return true;
}

MachOFile::Architecture MachOFile::chosenArchitecture(const CodeFile& file) const
{
    if (m_architectures.empty())
        return {0, 0, file.size(), 0};
    for (const std::uint32_t cpuType : {arm64Cpu, x86Cpu}) {
        const auto found = std::find_if(m_architectures.begin(), m_architectures.end(),
            [cpuType](const Architecture& one) { return one.cpuType == cpuType; });
        if (found != m_architectures.end())
            return *found;
    }
    return m_architectures.front();
}

std::optional<MachOFile> MachOFile::read(const CodeFile& file)
{
    MachOFile result;
    if (file.size() > largestProgram || !result.readArchitectures(file))
        return std::nullopt;
    const Architecture chosen = result.chosenArchitecture(file);
    const auto slice = readSlice(file, chosen.offset, chosen.length);
    if (!slice)
        return std::nullopt;
    result.m_slice = *slice;
    return result;
}

bool MachOFile::gapIsSound(
    const CodeFile& file, std::uint64_t begin, const Architecture& next, bool first) const
{
    const std::uint64_t length = next.offset - begin;
    const bool shortEnough = first || (next.align < 64 && length < 1ULL << next.align);
    return shortEnough && file.isZero(begin, length);
}

bool MachOFile::structureIsSound(const CodeFile& file) const
{
    if (m_architectures.empty())
        return m_slice.soundStructure;
    std::vector<Architecture> sorted = m_architectures;
    std::sort(sorted.begin(), sorted.end(),
        [](const Architecture& left, const Architecture& right) { return left.offset < right.offset; });
    std::uint64_t end = m_headerEnd;
    for (const Architecture& one : sorted) {
        const bool inside = one.offset <= file.size() && one.length <= file.size() - one.offset;
        // Empty slices at the same offset would count as not overlapping.
        if (!inside || one.offset < end || one.length == 0)
            return false;
        const auto slice = readSlice(file, one.offset, one.length);
        if (!slice || !slice->soundStructure || !gapIsSound(file, end, one, &one == &sorted.front()))
            return false;
        end = one.offset + one.length;
    }
    return true;
}

} // namespace quorvane::codesign
