#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

namespace quorvane::codesign {

namespace {

constexpr const char* unsignedAnswers = "basic 1, strict 1, none, none, platform 0, Self-Signed Certificate";
constexpr const char* unreadableAnswers
    = "basic 6, strict 6, none, none, platform 0, Self-Signed Certificate";
constexpr const char* adHocAnswers
    = "basic 2, strict 2, com.example.tool, none, platform 0, Self-Signed Certificate";

test::ProgramPlan namedProgram(std::uint32_t cpuType, const std::string& identifier)
{
    test::ProgramPlan plan;
    plan.cpuType = cpuType;
    plan.signature->directories.front().identifier = identifier;
    return plan;
}

test::SlicePlan slice(std::uint32_t cpuType, const std::string& identifier)
{
    return {cpuType, makeProgram(namedProgram(cpuType, identifier))};
}

std::string withIdentifier(const std::string& identifier)
{
    return "basic 2, strict 2, " + identifier + ", none, platform 0, Self-Signed Certificate";
}

} // namespace

TEST(MachO, IsReadInBothWidthsAndByteOrders)
{
    for (const bool wide : {false, true}) {
        for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
            for (const bool linkEdit : {false, true}) {
                test::ProgramPlan plan;
                plan.is64Bit = wide;
                plan.order = order;
                plan.withLinkEdit = linkEdit;
                EXPECT_EQ(test::answers(makeProgram(plan)), adHocAnswers);
            }
        }
    }
}

TEST(MachO, ThatIsNoProgramCountsAsUnsignedEvenWithASignature)
{
    const struct {
        std::uint32_t fileType;
        bool program;
    } cases[] = {{1, false}, {2, true}, {3, false}, {4, false}, {5, true}, {6, true}, {7, true}, {8, true},
        {9, false}, {10, false}, {11, true}, {12, false}, {0xffffffff, false}};
    for (const auto& c : cases) {
        test::ProgramPlan plan;
        plan.fileType = c.fileType;
        EXPECT_EQ(test::answers(makeProgram(plan)), c.program ? adHocAnswers : unsignedAnswers) << c.fileType;
    }
}

TEST(MachO, FilesOfOtherKindsCountAsUnsigned)
{
    const Bytes java = test::bytesOf(
        std::string("\xca\xfe\xba\xbe\0\0\0\x34\0\x1f\x0a\0\x06\0\x0b\x09\0\x0c\0\x0d\x08\0\x0e"
                    "\x0a\0\x0f\0\x10\x07\0\x11\x07\0\x12\x01\0\x06",
            37));
    for (const Bytes& file : {Bytes(), test::bytesOf("#!/bin/sh\nexit 0\n"),
             test::bytesOf(std::string(100, '\x7f')), java, Bytes(27, 0xfe), test::makeUnsignedProgram()})
        EXPECT_EQ(test::answers(file), unsignedAnswers);
}

TEST(MachO, ShorterThanAHeaderCountsAsUnsignedAndWithoutItsCommandsAsUnreadable)
{
    Bytes program = test::makeProgram();
    program.resize(27);
    EXPECT_EQ(test::answers(program), unsignedAnswers);
    program.resize(28);
    EXPECT_EQ(test::answers(program), unreadableAnswers);
    program.resize(32);
    EXPECT_EQ(test::answers(program), unreadableAnswers);
}

TEST(MachO, WithMalformedLoadCommandsIsUnreadable)
{
    const std::size_t firstCommand = 32;
    for (const std::uint32_t size : {0U, 7U, 0xffffffffU, 0x10000U}) {
        Bytes program = test::makeProgram();
        test::putNumber(program, firstCommand + 4, size, 4, ByteOrder::little);
        EXPECT_EQ(test::answers(program), unreadableAnswers) << size;
    }
    for (const std::uint32_t size : {0xffffffffU, 0x80000000U, 12U}) {
        Bytes program = test::makeProgram();
        test::putNumber(program, 20, size, 4, ByteOrder::little);
        EXPECT_EQ(test::answers(program), unreadableAnswers) << size;
    }
}

TEST(MachO, WithBytesBehindItsEndFailsTheStrictCheckOnly)
{
    for (const bool linkEdit : {false, true}) {
        test::ProgramPlan plan;
        plan.withLinkEdit = linkEdit;
        Bytes program = makeProgram(plan);
        program.push_back(0);
        EXPECT_EQ(test::states(program), "2 6");
    }
}

TEST(MachO, ThatNeitherSegmentNorSymbolsEndIsUnsound)
{
    test::ProgramPlan plan;
    plan.withLinkEdit = false;
    Bytes program = makeUnsignedProgram(plan);
    EXPECT_EQ(test::states(program), "1 1");
    test::SignaturePlan signature;
    // The symbol table is the second command, behind the one segment of 72 bytes.
    const auto hideSymbols = [](Bytes& made) { test::putNumber(made, 32 + 72, 0x7e, 4, ByteOrder::little); };
    program = makeProgram(plan);
    hideSymbols(program);
    const Bytes container = makeSignature(signature, ByteView(program.data(), test::codeLength));
    std::copy(container.begin(), container.end(), program.begin() + test::codeLength);
    EXPECT_EQ(test::states(program), "2 6");
}

TEST(Universal, IsAskedForItsArm64SliceThenX86ThenTheFirst)
{
    for (const bool wide : {false, true}) {
        EXPECT_EQ(
            test::answers(test::makeUniversal(
                {slice(test::x86_64, "intel"), slice(test::powerPc, "power"), slice(test::arm64, "arm")},
                wide)),
            withIdentifier("arm"));
        EXPECT_EQ(test::answers(test::makeUniversal(
                      {slice(test::powerPc, "power"), slice(test::x86_64, "intel")}, wide)),
            withIdentifier("intel"));
        EXPECT_EQ(
            test::answers(test::makeUniversal({slice(test::powerPc, "power"), slice(7, "old intel")}, wide)),
            withIdentifier("power"));
    }
}

TEST(Universal, AnswersForTheChosenSliceAlone)
{
    const test::SlicePlan plain{test::x86_64, test::makeUnsignedProgram()};
    EXPECT_EQ(test::states(test::makeUniversal({plain, slice(test::arm64, "arm")})), "2 2");
    EXPECT_EQ(test::states(test::makeUniversal({plain, {test::powerPc, test::makeProgram()}})), "1 1");
}

TEST(Universal, HasAHundredArchitecturesAtMost)
{
    Bytes file = test::makeUniversal({slice(test::arm64, "arm")});
    test::putBig32(file, 4, 100);
    EXPECT_EQ(test::states(file), "2 6") << "most of them empty, which the strict check refuses";
}

TEST(Universal, WithNoOrTooManyArchitecturesIsUnreadable)
{
    for (const std::uint32_t count : {0U, 101U, 10000U, 0xffffffffU}) {
        Bytes file = test::makeUniversal({slice(test::arm64, "arm")});
        test::putBig32(file, 4, count);
        EXPECT_EQ(test::answers(file), unreadableAnswers) << count;
    }
}

TEST(Universal, WhoseSliceLiesOutsideIsUnreadableOrNoProgram)
{
    Bytes file = test::makeUniversal({slice(test::powerPc, "power"), slice(test::arm64, "arm")});
    test::putBig32(file, 8 + 20 + 8, 0xfffffff0);
    EXPECT_EQ(test::answers(file), unreadableAnswers);
    file = test::makeUniversal({slice(test::arm64, "arm")});
    test::putBig32(file, 8 + 8, 0xfffffff0);
    EXPECT_EQ(test::answers(file), unsignedAnswers) << "no header at the first architecture";
    file = test::makeUniversal({slice(test::arm64, "arm")}, true);
    test::putNumber(file, 8 + 8, 0xffffffffffffff00, 8, ByteOrder::big);
    EXPECT_EQ(test::answers(file), unsignedAnswers);
}

TEST(Universal, ThatPointsAtUniversalHeadersIsNeverFollowedInACircle)
{
    Bytes circle = test::makeUniversal({slice(test::arm64, "arm")});
    test::putBig32(circle, 8 + 8, 0);
    EXPECT_EQ(test::answers(circle), unsignedAnswers);

    const Bytes inner = test::makeUniversal({slice(test::arm64, "arm")});
    EXPECT_EQ(test::answers(test::makeUniversal({{test::arm64, inner}})).substr(0, 7), "basic 1")
        << "the inner header's offsets do not lead to a program";
}

TEST(Universal, IsNoProgramBehindMoreThanThreeHeaders)
{
    const auto behind = [](std::size_t headers) {
        Bytes file = test::makeUniversal({slice(test::arm64, "arm")});
        const Bytes header(file.begin(), file.begin() + 28);
        const Bytes program = test::makeProgram();
        file.assign(4096 * headers, 0);
        for (std::size_t i = 0; i < headers; ++i) {
            std::copy(header.begin(), header.end(), file.begin() + static_cast<std::ptrdiff_t>(4096 * i));
            test::putBig32(file, 4096 * i + 16, 4096 * (i + 1));
        }
        test::append(file, program);
        return test::answers(file);
    };
    EXPECT_EQ(behind(3), unreadableAnswers) << "a program, but not in the slice";
    EXPECT_EQ(behind(4), unsignedAnswers);
}

TEST(Universal, MayHaveGapsSmallerThanTheAlignment)
{
    const test::SlicePlan first{test::x86_64, test::makeUnsignedProgram()};
    const Bytes program = test::makeProgram();
    const auto withGap = [&](std::size_t gap) {
        Bytes file = test::makeUniversal({first, {test::arm64, program}});
        file.resize(test::sliceOffset(file, 0) + first.contents.size());
        file.resize(file.size() + gap);
        test::putBig32(file, 8 + 20 + 8, file.size());
        test::putBig32(file, 8 + 20 + 16, 12);
        test::append(file, program);
        return test::states(file);
    };
    EXPECT_EQ(withGap(0), "2 2") << "side by side";
    EXPECT_EQ(withGap(4095), "2 2");
    EXPECT_EQ(withGap(4096), "2 6");
}

TEST(Universal, FailsTheStrictCheckWhenItsSlicesDoNotLieApart)
{
    const Bytes sound = test::makeUniversal({slice(test::x86_64, "intel"), slice(test::arm64, "arm")});
    ASSERT_EQ(test::states(sound), "2 2");
    const struct {
        const char* why;
        std::size_t offset;
        std::uint32_t value;
    } cases[] = {
        {"the other slice overlaps the chosen one", 8 + 12, static_cast<std::uint32_t>(sound.size())},
        {"the other slice reaches past the end", 8 + 12, 0xffffffff},
        {"the other slice starts where the chosen one does", 8 + 8,
            static_cast<std::uint32_t>(test::sliceOffset(sound, 1))},
        {"the gap is larger than the alignment", 8 + 20 + 16, 2},
        {"the alignment is beyond all numbers", 8 + 20 + 16, 64},
        {"the chosen slice is longer than its contents", 8 + 20 + 12, test::codeLength},
        {"the other slice is of no length", 8 + 12, 0},
        {"the other slice is longer than its contents", 8 + 12, test::codeLength + test::signatureRoom + 1},
    };
    for (const auto& c : cases) {
        Bytes file = sound;
        test::putBig32(file, c.offset, c.value);
        EXPECT_EQ(test::states(file), "2 6") << c.why;
    }
    for (const std::size_t offset : {std::size_t{100}, test::sliceOffset(sound, 1) - 1}) {
        Bytes file = sound;
        file[offset] = 1;
        EXPECT_EQ(test::states(file), "2 6") << "a byte in a gap at " << offset;
    }
}

TEST(Universal, FailsTheStrictCheckWhenAnotherSliceIsNotSound)
{
    test::SlicePlan longer = slice(test::x86_64, "intel");
    longer.contents.push_back(0);
    EXPECT_EQ(test::states(test::makeUniversal({longer, slice(test::arm64, "arm")})), "2 6");

    Bytes file = test::makeUniversal({slice(test::x86_64, "intel"), slice(test::arm64, "arm")});
    file[test::sliceOffset(file, 1)] ^= 0xffU; // the chosen slice is the second
    EXPECT_EQ(test::states(file), "6 6");
}

} // namespace quorvane::codesign
