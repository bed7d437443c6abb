#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"

#include <gtest/gtest.h>

namespace quorvane::test {

namespace {

constexpr const char* unsignedAnswers = "basic 1, strict 1, none, none, platform 0, Self-Signed Certificate";
constexpr const char* unreadableAnswers
    = "basic 6, strict 6, none, none, platform 0, Self-Signed Certificate";
constexpr const char* adHocAnswers
    = "basic 2, strict 2, com.example.tool, none, platform 0, Self-Signed Certificate";

ProgramPlan namedProgram(std::uint32_t cpuType, const std::string& identifier)
{
    ProgramPlan plan;
    plan.cpuType = cpuType;
    plan.signature->directories.front().identifier = identifier;
    return plan;
}

SlicePlan slice(std::uint32_t cpuType, const std::string& identifier)
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
                ProgramPlan plan;
                plan.is64Bit = wide;
                plan.order = order;
                plan.withLinkEdit = linkEdit;
                EXPECT_EQ(answers(makeProgram(plan)), adHocAnswers);
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
        ProgramPlan plan;
        plan.fileType = c.fileType;
        EXPECT_EQ(answers(makeProgram(plan)), c.program ? adHocAnswers : unsignedAnswers) << c.fileType;
    }
}

TEST(MachO, FilesOfOtherKindsCountAsUnsigned)
{
    const Bytes java
        = bytesOf(std::string("\xca\xfe\xba\xbe\0\0\0\x34\0\x1f\x0a\0\x06\0\x0b\x09\0\x0c\0\x0d\x08\0\x0e"
                              "\x0a\0\x0f\0\x10\x07\0\x11\x07\0\x12\x01\0\x06",
            37));
    for (const Bytes& file : {Bytes(), bytesOf("#!/bin/sh\nexit 0\n"), bytesOf(std::string(100, '\x7f')),
             java, Bytes(27, 0xfe), makeUnsignedProgram()})
        EXPECT_EQ(answers(file), unsignedAnswers);
}

TEST(MachO, ShorterThanAHeaderCountsAsUnsignedAndWithoutItsCommandsAsUnreadable)
{
    Bytes program = makeProgram();
    program.resize(27);
    EXPECT_EQ(answers(program), unsignedAnswers);
    program.resize(28);
    EXPECT_EQ(answers(program), unreadableAnswers);
    program.resize(32);
    EXPECT_EQ(answers(program), unreadableAnswers);
}

TEST(MachO, WithMalformedLoadCommandsIsUnreadable)
{
    const std::size_t firstCommand = 32;
    for (const std::uint32_t size : {0U, 7U, 0xffffffffU, 0x10000U}) {
        Bytes program = makeProgram();
        putNumber(program, firstCommand + 4, size, 4, ByteOrder::little);
        EXPECT_EQ(answers(program), unreadableAnswers) << size;
    }
    for (const std::uint32_t size : {0xffffffffU, 0x80000000U, 12U}) {
        Bytes program = makeProgram();
        putNumber(program, 20, size, 4, ByteOrder::little);
        EXPECT_EQ(answers(program), unreadableAnswers) << size;
    }
}

TEST(MachO, WithBytesBehindItsEndFailsTheStrictCheckOnly)
{
    for (const bool linkEdit : {false, true}) {
        ProgramPlan plan;
        plan.withLinkEdit = linkEdit;
        Bytes program = makeProgram(plan);
        program.push_back(0);
        EXPECT_EQ(states(program), "2 6");
    }
}

TEST(MachO, ThatNeitherSegmentNorSymbolsEndIsUnsound)
{
    ProgramPlan plan;
    plan.withLinkEdit = false;
    Bytes program = makeUnsignedProgram(plan);
    EXPECT_EQ(states(program), "1 1");
    SignaturePlan signature;
    // The symbol table is the second command, behind the one segment of 72 bytes.
    const auto hideSymbols = [](Bytes& made) { putNumber(made, 32 + 72, 0x7e, 4, ByteOrder::little); };
    program = makeProgram(plan);
    hideSymbols(program);
    const Bytes container = makeSignature(signature, ByteView(program.data(), codeLength));
    std::copy(container.begin(), container.end(), program.begin() + codeLength);
    EXPECT_EQ(states(program), "2 6");
}

TEST(Universal, IsAskedForItsArm64SliceThenX86ThenTheFirst)
{
    for (const bool wide : {false, true}) {
        EXPECT_EQ(answers(makeUniversal(
                      {slice(x86_64, "intel"), slice(powerPc, "power"), slice(arm64, "arm")}, wide)),
            withIdentifier("arm"));
        EXPECT_EQ(answers(makeUniversal({slice(powerPc, "power"), slice(x86_64, "intel")}, wide)),
            withIdentifier("intel"));
        EXPECT_EQ(answers(makeUniversal({slice(powerPc, "power"), slice(7, "old intel")}, wide)),
            withIdentifier("power"));
    }
}

TEST(Universal, AnswersForTheChosenSliceAlone)
{
    const SlicePlan plain{x86_64, makeUnsignedProgram()};
    EXPECT_EQ(states(makeUniversal({plain, slice(arm64, "arm")})), "2 2");
    EXPECT_EQ(states(makeUniversal({plain, {powerPc, makeProgram()}})), "1 1");
}

TEST(Universal, WithNoOrTooManyArchitecturesIsUnreadable)
{
    for (const std::uint32_t count : {0U, 101U, 10000U, 0xffffffffU}) {
        Bytes file = makeUniversal({slice(arm64, "arm")});
        putBig32(file, 4, count);
        EXPECT_EQ(answers(file), unreadableAnswers) << count;
    }
}

TEST(Universal, WhoseSliceLiesOutsideIsUnreadableOrNoProgram)
{
    Bytes file = makeUniversal({slice(powerPc, "power"), slice(arm64, "arm")});
    putBig32(file, 8 + 20 + 8, 0xfffffff0);
    EXPECT_EQ(answers(file), unreadableAnswers);
    file = makeUniversal({slice(arm64, "arm")});
    putBig32(file, 8 + 8, 0xfffffff0);
    EXPECT_EQ(answers(file), unsignedAnswers) << "no header at the first architecture";
    file = makeUniversal({slice(arm64, "arm")}, true);
    putNumber(file, 8 + 8, 0xffffffffffffff00, 8, ByteOrder::big);
    EXPECT_EQ(answers(file), unsignedAnswers);
}

TEST(Universal, ThatPointsAtUniversalHeadersIsNeverFollowedInACircle)
{
    Bytes circle = makeUniversal({slice(arm64, "arm")});
    putBig32(circle, 8 + 8, 0);
    EXPECT_EQ(answers(circle), unsignedAnswers);

    const Bytes inner = makeUniversal({slice(arm64, "arm")});
    EXPECT_EQ(answers(makeUniversal({{arm64, inner}})).substr(0, 7), "basic 1")
        << "the inner header's offsets do not lead to a program";
}

TEST(Universal, FailsTheStrictCheckWhenItsSlicesDoNotLieApart)
{
    const Bytes sound = makeUniversal({slice(x86_64, "intel"), slice(arm64, "arm")});
    ASSERT_EQ(states(sound), "2 2");
    const struct {
        const char* why;
        std::size_t offset;
        std::uint32_t value;
    } cases[] = {
        {"the other slice overlaps the chosen one", 8 + 12, static_cast<std::uint32_t>(sound.size())},
        {"the other slice reaches past the end", 8 + 12, 0xffffffff},
        {"the other slice starts where the chosen one does", 8 + 8,
            static_cast<std::uint32_t>(sliceOffset(sound, 1))},
        {"the gap is larger than the alignment", 8 + 20 + 16, 2},
        {"the chosen slice is longer than its contents", 8 + 20 + 12, codeLength},
        {"the other slice is of no length", 8 + 12, 0},
        {"the other slice is longer than its contents", 8 + 12, codeLength + signatureRoom + 1},
    };
    for (const auto& c : cases) {
        Bytes file = sound;
        putBig32(file, c.offset, c.value);
        EXPECT_EQ(states(file), "2 6") << c.why;
    }
    for (const std::size_t offset : {std::size_t{100}, sliceOffset(sound, 1) - 1}) {
        Bytes file = sound;
        file[offset] = 1;
        EXPECT_EQ(states(file), "2 6") << "a byte in a gap at " << offset;
    }
}

TEST(Universal, FailsTheStrictCheckWhenAnotherSliceIsNotSound)
{
    SlicePlan longer = slice(x86_64, "intel");
    longer.contents.push_back(0);
    EXPECT_EQ(states(makeUniversal({longer, slice(arm64, "arm")})), "2 6");

    Bytes file = makeUniversal({slice(x86_64, "intel"), slice(arm64, "arm")});
    file[sliceOffset(file, 1)] ^= 0xffU; // the chosen slice is the second
    EXPECT_EQ(states(file), "6 6");
}

} // namespace quorvane::test
