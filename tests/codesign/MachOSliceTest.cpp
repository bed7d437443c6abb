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
