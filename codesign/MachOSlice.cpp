#include "codesign/MachOSlice.h"

#include <string_view>

namespace quorvane::codesign {

namespace {

constexpr std::uint32_t segmentCommand = 0x1;
constexpr std::uint32_t symbolTableCommand = 0x2;
constexpr std::uint32_t segment64Command = 0x19;
constexpr std::uint32_t codeSignatureCommand = 0x1d;
constexpr std::uint64_t smallestCodeSignatureCommand = 16;

// Genuine programs have some kilobytes of load commands; a universal file may have a hundred slices.
constexpr std::uint64_t largestCommands = 1U << 20U;

struct Format {
    ByteOrder order;
    unsigned wordSize; // of addresses and file offsets in segments
};

std::optional<Format> formatOf(ByteView header)
{
    switch (header.u32(0)) {
    case 0xcefaedfe:
        return Format{ByteOrder::little, 4};
    case 0xcffaedfe:
        return Format{ByteOrder::little, 8};
    case 0xfeedface:
        return Format{ByteOrder::big, 4};
    case 0xfeedfacf:
        return Format{ByteOrder::big, 8};
    default:
        return std::nullopt;
    }
}

// The offsets of the fields of a segment command and its sections.
struct SegmentFields {
    std::uint64_t fileOffset, fileSize, firstSection, sectionLength, sectionSize, sectionOffset;
};
constexpr SegmentFields fields32{32, 36, 56, 68, 36, 40};
constexpr SegmentFields fields64{40, 48, 72, 80, 40, 48};

// A name padded with zero bytes to 16; one of 16 characters has no terminator.
std::string_view paddedName(ByteView command, std::uint64_t offset)
{
    const std::string_view name = command.part(offset, 16).value_or(ByteView()).text();
    return name.substr(0, name.find('\0'));
}

bool endsAt(std::uint64_t offset, std::uint64_t size, std::uint64_t end)
{
    return offset <= end && size == end - offset;
}

// Collects the contents of the load commands, one by one.
class CommandReader {
public:
    CommandReader(Format format, MachOSlice& slice)
        : m_format(format)
        , m_slice(slice)
    {
    }

    // False when the command is malformed.
    bool take(ByteView command)
    {
        switch (number(command, 0)) {
        case codeSignatureCommand:
            return takeSignature(command);
        case segmentCommand:
            takeSegment(command, fields32, 4);
            return true;
        case segment64Command:
            takeSegment(command, fields64, 8);
            return true;
        case symbolTableCommand:
            if (!m_structureKnown && endsAt(number(command, 16), number(command, 20), m_slice.length))
                m_slice.soundStructure = m_structureKnown = true;
            return true;
        default:
            return true;
        }
    }

private:
    std::uint32_t number(ByteView command, std::uint64_t offset) const
    {
        return command.u32(offset, m_format.order);
    }

    bool takeSignature(ByteView command)
    {
        if (command.size() < smallestCodeSignatureCommand)
            return false;
        if (!m_signatureSeen)
            m_slice.signature = {number(command, 8), number(command, 12)};
        m_signatureSeen = true;
        return true;
    }

    void takeSegment(ByteView command, const SegmentFields& fields, unsigned wordSize)
    {
        if (!m_structureKnown && paddedName(command, 8) == "__LINKEDIT") {
            m_slice.soundStructure = endsAt(command.number(fields.fileOffset, wordSize, m_format.order),
                command.number(fields.fileSize, wordSize, m_format.order), m_slice.length);
            m_structureKnown = true;
        }
        std::uint64_t left = number(command, fields.firstSection - 8);
        for (std::uint64_t at = fields.firstSection; left > 0 && command.holds(at, fields.sectionLength);
             --left) {
            takeSection(*command.part(at, fields.sectionLength), fields, wordSize);
            at += fields.sectionLength;
        }
    }

    void takeSection(ByteView section, const SegmentFields& fields, unsigned wordSize)
    {
        if (m_slice.infoPlist || paddedName(section, 0) != "__info_plist"
            || paddedName(section, 16) != "__TEXT")
            return;
        m_slice.infoPlist = SliceRange{number(section, fields.sectionOffset),
            section.number(fields.sectionSize, wordSize, m_format.order)};
    }

    Format m_format;
    MachOSlice& m_slice;
    bool m_signatureSeen = false;
    bool m_structureKnown = false;
};

} // namespace

std::optional<std::uint32_t> machOFileType(ByteView header)
{
    const auto format = formatOf(header);
    if (!format || !header.holds(12, 4))
        return std::nullopt;
    return header.u32(12, format->order);
}

std::optional<MachOSlice> readSlice(const CodeFile& file, std::uint64_t offset, std::uint64_t length)
{
    const auto header = file.bytes(offset, machHeaderPrefix, machHeaderPrefix);
    const auto format = header ? formatOf(*header) : std::nullopt;
    if (!format)
        return std::nullopt;
    const std::uint64_t headerSize = format->wordSize == 8 ? 32 : 28;
    const std::uint32_t commandsSize = ByteView(*header).u32(20, format->order);
    const auto bytes = file.bytes(offset + headerSize, commandsSize, largestCommands);
    if (!bytes)
        return std::nullopt;

    MachOSlice slice;
    slice.offset = offset;
    slice.length = length;
    CommandReader reader(*format, slice);
    const ByteView commands(*bytes);
    for (std::uint64_t at = 0; at < commands.size();) {
        const std::uint32_t size = commands.u32(at + 4, format->order);
        const auto command = commands.part(at, size);
        if (size < 8 || !command || !reader.take(*command))
            return std::nullopt;
        at += size;
    }
    return slice;
}

} // namespace quorvane::codesign
