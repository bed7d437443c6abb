#include "codesign/MachOSlice.h"

#include "tests/support/ByteWriter.h"
#include "tests/support/MachOBuilder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace quorvane::codesign {

namespace {

std::optional<MachOSlice> sliceOf(const Bytes& program)
{
    const test::TemporaryFolder folder;
    const auto file = CodeFile::open(folder.write("program", program));
    return readSlice(*file, 0, file->size());
}

test::ProgramPlan planOf(bool is64Bit, ByteOrder order)
{
    test::ProgramPlan plan;
    plan.is64Bit = is64Bit;
    plan.order = order;
    plan.infoPlistSection = test::bytesOf("a list");
    return plan;
}

// A program whose first segment claims that number of sections; it holds one.
Bytes programClaimingSections(const test::ProgramPlan& plan, std::uint32_t sections)
{
    Bytes program = makeProgram(plan);
    test::putNumber(program, plan.is64Bit ? 32 + 64 : 28 + 48, sections, 4, plan.order);
    return program;
}

} // namespace

class MachOSlices : public testing::TestWithParam<test::ProgramPlan> { };

TEST_P(MachOSlices, SayWhereSignatureAndInfoPlistAre)
{
    const auto slice = sliceOf(makeProgram(GetParam()));
    ASSERT_TRUE(slice);
    EXPECT_EQ(slice->signature.offset, test::codeLength);
    EXPECT_EQ(slice->signature.length, test::signatureRoom);
    ASSERT_TRUE(slice->infoPlist);
    EXPECT_EQ(slice->infoPlist->offset, 4096U);
    EXPECT_EQ(slice->infoPlist->length, 6U);
    EXPECT_TRUE(slice->soundStructure);
}

TEST_P(MachOSlices, HaveAsManySectionsAsTheirSegmentsSay)
{
    EXPECT_FALSE(sliceOf(programClaimingSections(GetParam(), 0))->infoPlist);
    EXPECT_TRUE(sliceOf(programClaimingSections(GetParam(), 1))->infoPlist);
}

TEST_P(MachOSlices, HaveNoMoreSectionsThanTheirSegmentsHold)
{
    for (const std::uint32_t claimed : {2U, 1000U, UINT32_MAX}) {
        const auto slice = sliceOf(programClaimingSections(GetParam(), claimed));
        ASSERT_TRUE(slice);
        EXPECT_EQ(slice->infoPlist->length, 6U);
        EXPECT_EQ(slice->signature.offset, test::codeLength) << "the commands behind the segment are read";
    }
}

INSTANTIATE_TEST_SUITE_P(OfEveryForm, MachOSlices,
    testing::Values(planOf(true, ByteOrder::little), planOf(true, ByteOrder::big),
        planOf(false, ByteOrder::little), planOf(false, ByteOrder::big)));

TEST(MachOSlice, IsUnsignedWithoutASignatureCommand)
{
    const auto slice = sliceOf(test::makeUnsignedProgram());
    ASSERT_TRUE(slice);
    EXPECT_EQ(slice->signature.offset, 0U);
    EXPECT_FALSE(slice->infoPlist);
}

TEST(MachOSlice, TakesOnlyAnInfoPlistOfTheTextSegment)
{
    // The names of section and segment, 16 bytes each, follow the segment's own 72 bytes.
    const std::size_t section = 32 + 72;
    for (const std::size_t at : {section, section + 16}) {
        Bytes program = makeProgram(planOf(true, ByteOrder::little));
        program[at + 2] ^= 1U;
        const auto slice = sliceOf(program);
        ASSERT_TRUE(slice);
        EXPECT_FALSE(slice->infoPlist) << at;
    }
}

TEST(MachOSlice, HasItsFirstSignatureAndItsFirstInfoPlist)
{
    const test::ProgramPlan plan = planOf(true, ByteOrder::little);
    Bytes program = makeProgram(plan);
    // The symbol table, of 24 bytes before the last command, becomes another signature.
    const std::size_t last = 32 + ByteView(program).u32(20, ByteOrder::little) - 16;
    test::putNumber(program, last - 24, 0x1d, 4, ByteOrder::little);
    test::putNumber(program, last - 16, 4711, 4, ByteOrder::little);
    EXPECT_EQ(sliceOf(program)->signature.offset, 4711U);

    // The first segment gets room for a copy of its one section.
    program = makeProgram(plan);
    const auto section = program.begin() + 32 + 72;
    const Bytes copy(section, section + 80);
    program.insert(section, copy.begin(), copy.end());
    test::putNumber(program, 32 + 4, 72 + 2 * 80, 4, ByteOrder::little);
    test::putNumber(program, 32 + 64, 2, 4, ByteOrder::little);
    test::putNumber(program, 20, ByteView(program).u32(20, ByteOrder::little) + 80, 4, ByteOrder::little);
    test::putNumber(program, 32 + 72 + 48, 4711, 4, ByteOrder::little);
    EXPECT_EQ(sliceOf(program)->infoPlist->offset, 4711U);
}

TEST(MachOSlice, WithASignatureCommandThatIsCutIsUnreadable)
{
    Bytes program = test::makeProgram();
    const std::uint32_t commands = ByteView(program).u32(20, ByteOrder::little);
    const std::size_t last = 32 + commands - 16;
    ASSERT_EQ(ByteView(program).u32(last, ByteOrder::little), 0x1dU);
    test::putNumber(program, 20, commands - 1, 4, ByteOrder::little);
    test::putNumber(program, last + 4, 15, 4, ByteOrder::little);
    EXPECT_FALSE(sliceOf(program));
}

TEST(MachOSlice, HasAMebibyteOfCommandsAtMost)
{
    const auto withCommands = [](std::uint32_t size) {
        Bytes program(32 + size);
        test::putNumber(program, 0, 0xfeedfacf, 4, ByteOrder::little);
        test::putNumber(program, 20, size, 4, ByteOrder::little);
        for (std::uint32_t at = 0; at < size; at += 8) // each of nothing but its own header
            test::putNumber(program, 32 + at + 4, 8, 4, ByteOrder::little);
        return sliceOf(program);
    };
    EXPECT_TRUE(withCommands(1U << 20U));
    EXPECT_FALSE(withCommands((1U << 20U) + 8));
}

TEST(MachOSlice, HasTheFileTypeOfItsHeader)
{
    Bytes header = makeProgram(planOf(false, ByteOrder::big));
    header.resize(16);
    EXPECT_EQ(machOFileType(header), 2U);
    header.resize(15);
    EXPECT_EQ(machOFileType(header), std::nullopt);
    EXPECT_EQ(machOFileType(test::makeUniversal({{test::arm64, {}}})), std::nullopt);
}

} // namespace quorvane::codesign
