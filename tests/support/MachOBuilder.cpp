#include "tests/support/MachOBuilder.h"

#include "tests/support/ByteWriter.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace quorvane::test {

namespace {

// Writes header and load commands in one byte order and width.
class CommandWriter {
public:
    CommandWriter(codesign::Bytes& out, const ProgramPlan& plan)
        : m_out(out)
        , m_plan(plan)
        , m_at(plan.is64Bit ? 32 : 28)
    {
    }

    void header()
    {
        put(0, m_plan.is64Bit ? 0xfeedfacf : 0xfeedface);
        put(4, m_plan.cpuType);
        put(12, m_plan.fileType);
    }

    void segment(
        const char* name, std::size_t offset, std::size_t size, std::optional<codesign::ByteView> infoPlist)
    {
        const bool wide = m_plan.is64Bit;
        const std::size_t section = m_at + (wide ? 72 : 56);
        const std::size_t length = (wide ? 72U : 56U) + (infoPlist ? (wide ? 80U : 68U) : 0U);
        put(m_at, wide ? 0x19 : 0x1);
        text(m_at + 8, name);
        word(m_at + (wide ? 40 : 32), offset);
        word(m_at + (wide ? 48 : 36), size);
        put(m_at + (wide ? 64 : 48), infoPlist ? 1 : 0);
        if (infoPlist) {
            text(section, "__info_plist");
            text(section + 16, "__TEXT");
            word(section + (wide ? 40 : 36), infoPlist->size());
            put(section + (wide ? 48 : 40), infoPlistOffset);
        }
        finish(length);
    }

    void symbolTable(std::size_t stringsOffset, std::size_t stringsSize)
    {
        put(m_at, 0x2);
        put(m_at + 16, stringsOffset);
        put(m_at + 20, stringsSize);
        finish(24);
    }

    void codeSignature(std::size_t offset, std::size_t size)
    {
        put(m_at, 0x1d);
        put(m_at + 8, offset);
        put(m_at + 12, size);
        finish(16);
    }

    static constexpr std::size_t infoPlistOffset = 0x1000;

private:
    void put(std::size_t offset, std::uint64_t value) { putNumber(m_out, offset, value, 4, m_plan.order); }
    void word(std::size_t offset, std::uint64_t value)
    {
        putNumber(m_out, offset, value, m_plan.is64Bit ? 8 : 4, m_plan.order);
    }
    void text(std::size_t offset, const char* name)
    {
        std::memcpy(&m_out.at(offset), name, std::strlen(name));
    }
    void finish(std::size_t length)
    {
        put(m_at + 4, length);
        m_at += length;
        put(16, ++m_count);
        put(20, m_at - (m_plan.is64Bit ? 32 : 28));
    }

    codesign::Bytes& m_out;
    const ProgramPlan& m_plan;
    std::size_t m_at;
    std::uint32_t m_count = 0;
};

} // namespace

codesign::Bytes makeProgram(const ProgramPlan& plan)
{
    const std::size_t room = plan.signature ? signatureRoom : 0;
    codesign::Bytes program(codeLength);
    for (std::size_t i = 4096; i < program.size(); ++i)
        program[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    if (plan.infoPlistSection)
        std::copy(plan.infoPlistSection->begin(), plan.infoPlistSection->end(),
            program.begin() + CommandWriter::infoPlistOffset);
    CommandWriter commands(program, plan);
    commands.header();
    commands.segment("__TEXT", 0, codeLength - 1000,
        plan.infoPlistSection ? std::optional<codesign::ByteView>(*plan.infoPlistSection) : std::nullopt);
    if (plan.withLinkEdit)
        commands.segment("__LINKEDIT", codeLength - 1000, 1000 + room, std::nullopt);
    commands.symbolTable(codeLength - 1000, 1000 + (plan.withLinkEdit ? 0 : room));
    if (!plan.signature)
        return program;
    commands.codeSignature(codeLength, room);
    const codesign::Bytes container = makeSignature(*plan.signature, program);
    if (container.size() > signatureRoom)
        throw std::runtime_error("the signature does not fit");
    append(program, container);
    program.resize(codeLength + signatureRoom);
    return program;
}

codesign::Bytes makeUnsignedProgram(ProgramPlan plan)
{
    plan.signature.reset();
    return makeProgram(plan);
}

codesign::Bytes makeUniversal(const std::vector<SlicePlan>& slices, bool wide)
{
    constexpr std::size_t alignment = 1U << 14U;
    codesign::Bytes file;
    putBig32(file, 0, wide ? 0xcafebabf : 0xcafebabe);
    putBig32(file, 4, slices.size());
    std::size_t entry = 8;
    std::size_t offset = alignment;
    for (const SlicePlan& slice : slices) {
        const unsigned width = wide ? 8 : 4;
        const std::size_t align = entry + 8 + width + width;
        putBig32(file, entry, slice.cpuType);
        putNumber(file, entry + 8, offset, width, codesign::ByteOrder::big);
        putNumber(file, entry + 8 + width, slice.contents.size(), width, codesign::ByteOrder::big);
        putBig32(file, align, 14);
        entry += wide ? 32 : 20;
        file.resize(std::max(file.size(), entry));
        offset = (offset + slice.contents.size() + alignment - 1) / alignment * alignment;
    }
    for (std::size_t i = 0; i < slices.size(); ++i) {
        file.resize(sliceOffset(file, i));
        append(file, slices[i].contents);
    }
    return file;
}

std::size_t sliceOffset(codesign::ByteView universal, std::size_t index)
{
    const bool wide = universal.u32(0) == 0xcafebabf;
    return static_cast<std::size_t>(
        universal.number(8 + index * (wide ? 32 : 20) + 8, wide ? 8 : 4, codesign::ByteOrder::big));
}

} // namespace quorvane::test
