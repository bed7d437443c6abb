#include "codesign/ProgramCode.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <utility>

namespace quorvane::codesign {

namespace {

Bytes programWith(const std::vector<test::DirectoryPlan>& directories)
{
    test::ProgramPlan plan;
    plan.signature->directories = directories;
    return makeProgram(plan);
}

Bytes programAltered(
    std::size_t offset, std::uint64_t value, unsigned length, std::uint32_t version = 0x20400)
{
    test::ProgramPlan plan;
    plan.signature->directories.front().version = version;
    plan.signature->alter = [=](std::vector<Bytes>& directories) {
        test::putNumber(directories.front(), offset, value, length, ByteOrder::big);
    };
    return makeProgram(plan);
}

test::DirectoryPlan ofType(std::uint8_t type, const std::string& identifier = "com.example.tool")
{
    test::DirectoryPlan plan;
    plan.hashType = type;
    plan.identifier = identifier;
    return plan;
}

std::string identifierOf(const Bytes& program)
{
    const test::TemporaryFolder folder;
    return ProgramCode::atPath(folder.write("program", program))
        ->signingInformation()
        .identifier.value_or("none");
}

} // namespace

TEST(Signature, AdHocHasAnIdentifierButNeverATeam)
{
    test::DirectoryPlan directory;
    directory.team = "TEAM123456";
    EXPECT_EQ(test::answers(programWith({directory})),
        "basic 2, strict 2, com.example.tool, none, platform 0, Self-Signed Certificate");
}

TEST(Signature, TellsThePlatformByte)
{
    test::DirectoryPlan directory;
    directory.platform = 13;
    directory.identifier = "com.example.part";
    EXPECT_EQ(test::answers(programWith({directory})),
        "basic 2, strict 2, com.example.part, none, platform 13, Self-Signed Certificate");
}

TEST(Signature, TextsThatNobodyCanShowAreNone)
{
    test::DirectoryPlan directory;
    directory.identifier = "com\xff\xfe";
    EXPECT_EQ(test::answers(programWith({directory})),
        "basic 2, strict 2, none, none, platform 0, Self-Signed Certificate");
    directory.identifier = "(null)";
    EXPECT_EQ(test::answers(programWith({directory})),
        "basic 2, strict 2, none, none, platform 0, Self-Signed Certificate");
}

TEST(Signature, IsVerifiedWithEveryKnownHashAndPageSize)
{
    for (const std::uint8_t type : std::initializer_list<std::uint8_t>{1, 2, 3, 4}) {
        for (const std::uint8_t pageSize : std::initializer_list<std::uint8_t>{0, 8, 12, 14, 20, 40}) {
            test::DirectoryPlan directory = ofType(type);
            directory.pageSize = pageSize;
            EXPECT_EQ(test::states(programWith({directory})), "2 2") << int(type) << " " << int(pageSize);
        }
    }
}

TEST(Signature, IsVerifiedInEveryVersion)
{
    for (const std::uint32_t version :
        {0x20001U, 0x20100U, 0x20200U, 0x20300U, 0x20400U, 0x20500U, 0x20600U, 0x2f000U}) {
        test::DirectoryPlan directory;
        directory.version = version;
        EXPECT_EQ(test::states(programWith({directory})), "2 2") << version;
    }
}

TEST(Signature, TakesTheIdentityFromTheStrongestDirectory)
{
    EXPECT_EQ(identifierOf(programWith({ofType(1, "sha1"), ofType(2, "sha256")})), "sha256");
    EXPECT_EQ(identifierOf(programWith({ofType(2, "sha256"), ofType(1, "sha1")})), "sha256");
    EXPECT_EQ(identifierOf(programWith({ofType(3, "cut"), ofType(1, "sha1")})), "cut");
    EXPECT_EQ(identifierOf(programWith(
                  {ofType(1, "sha1"), ofType(3, "cut"), ofType(2, "sha256"), ofType(4, "sha384")})),
        "sha384");
}

TEST(Signature, ChecksThePagesOfEveryDirectory)
{
    for (const std::size_t wrong : {0U, 1U}) {
        test::ProgramPlan plan;
        plan.signature->directories = {ofType(1), ofType(2)};
        plan.signature->alter = [wrong](std::vector<Bytes>& directories) { directories[wrong].back() ^= 1U; };
        EXPECT_EQ(test::states(makeProgram(plan)), "2 3") << wrong;
    }
}

TEST(Signature, WithTwoDirectoriesOfOneHashTypeIsInvalid)
{
    EXPECT_EQ(test::answers(programWith({ofType(2), ofType(2)})),
        "basic 3, strict 3, none, none, platform 0, Self-Signed Certificate");
}

TEST(Signature, WithUnknownHashes)
{
    EXPECT_EQ(test::states(programAltered(37, 9, 1)), "6 6") << "only unknown ones cannot be told";
    test::ProgramPlan plan;
    plan.signature->directories = {ofType(2), ofType(1)};
    plan.signature->alter = [](std::vector<Bytes>& directories) { directories[1][37] = 9; };
    EXPECT_EQ(test::states(makeProgram(plan)), "2 5")
        << "an unknown one among others matters when pages are checked";
}

TEST(Signature, OfADirectoryThatIsDamagedFails)
{
    const struct {
        const char* why;
        std::size_t offset;
        std::uint64_t value;
        unsigned length;
        const char* states;
    } cases[] = {
        {"wrong magic", 0, 0xfade0c03, 4, "3 3"},
        {"version too old", 8, 0x20000, 4, "5 5"},
        {"version too new", 8, 0x2f001, 4, "5 5"},
        {"identifier outside", 20, 0xffffffff, 4, "3 3"},
        {"identifier without an end", 20, 0x7ffffff0, 4, "3 3"},
        {"team outside", 48, 0xfffffff0, 4, "3 3"},
        {"hashes outside", 16, 0xfffffff0, 4, "3 3"},
        {"special hashes before the start", 24, 0xffffffff, 4, "3 3"},
        {"more pages than hashes", 28, 0xffffffff, 4, "3 3"},
        {"fewer pages than the limit says", 28, 3, 4, "3 3"},
        {"limit too small for the pages", 32, 4096, 4, "3 3"},
        {"limit of nothing", 32, 0, 4, "3 3"},
        {"64-bit limit of 2^62", 56, 1ULL << 62U, 8, "3 3"},
        {"hash size of another type", 36, 20, 1, "3 3"},
        {"hash size zero", 36, 0, 1, "3 3"},
        {"page size 2^255", 39, 255, 1, "3 3"},
        {"page size 2^64", 39, 64, 1, "3 3"},
        {"one page of many", 39, 0, 1, "3 3"},
        {"scatter list outside", 44, 0xfffffff0, 4, "3 3"},
        {"scatter list without an end", 44, 457, 4, "3 3"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(test::states(programAltered(c.offset, c.value, c.length)), c.states) << c.why;
}

TEST(Signature, OverMoreThanAnyProgramHasIsNotVerified)
{
    // given one page of several GiB, which is a hole in the file
    constexpr std::uint64_t limit = 3ULL << 30U;
    test::SignaturePlan plan;
    plan.directories.front().pageSize = 0;
    plan.directories.front().limit = limit;
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", programOf(plan));
    std::filesystem::resize_file(path, limit + 1);
    EXPECT_EQ(test::stateAt(path, 0x4), 4);
}

TEST(Signature, OverNoCodeHasNoPageOrAnEmptyOne)
{
    const struct {
        std::optional<std::string> page; // what the one page's hash is of
        std::int32_t state;
    } cases[] = {{std::nullopt, 2}, {"", 2}, {"something", 3}};
    for (const auto& c : cases) {
        test::SignaturePlan plan;
        plan.directories.front().pageSize = 0;
        plan.directories.front().limit = 0;
        plan.alter = [&c](std::vector<Bytes>& directories) {
            if (!c.page)
                return;
            Bytes& directory = directories.front();
            test::append(directory, hashOf(HashAlgorithm::sha256, test::bytesOf(*c.page)).view());
            test::putBig32(directory, 28, 1);
            test::putBig32(directory, 4, directory.size());
        };
        const test::TemporaryFolder folder;
        EXPECT_EQ(test::stateAt(folder.write("program", programOf(plan)), 0x4), c.state);
    }
}

TEST(Signature, UnderAnIdentifierThatNobodyCouldReadTellsNone)
{
    test::SignaturePlan plan;
    plan.directories.front().identifier = std::string(4096, 'x');
    EXPECT_NE(test::answers(programOf(plan)).find("xxx"), std::string::npos);
    plan.directories.front().identifier += "x";
    EXPECT_EQ(
        test::answers(programOf(plan)), "basic 2, strict 2, none, none, platform 0, Self-Signed Certificate");
}

TEST(Signature, WithAScatterListThatEndsIsValid)
{
    // The spare special slots are zeros: 24 of them are a list without records.
    const Bytes program = programAltered(44, 120, 4);
    EXPECT_EQ(test::states(program), "2 2");
}

TEST(Signature, IgnoresFieldsThatItsVersionDoesNotHave)
{
    EXPECT_EQ(test::states(programAltered(56, 1ULL << 62U, 8, 0x20200)), "2 2")
        << "no 64-bit limit in that version";
    EXPECT_EQ(test::states(programAltered(48, 0xfffffff0, 4, 0x20100)), "2 2") << "no team in that version";
    EXPECT_EQ(test::states(programAltered(44, 0xfffffff0, 4, 0x20001)), "2 2")
        << "no scatter list in that version";
}

TEST(Signature, OfASinglePageWithAnEnormousLimitFailsAtOnce)
{
    test::ProgramPlan plan;
    plan.signature->directories.front().pageSize = 0;
    plan.signature->alter = [](std::vector<Bytes>& directories) {
        test::putNumber(directories.front(), 56, 1ULL << 62U, 8, ByteOrder::big);
    };
    EXPECT_EQ(test::states(makeProgram(plan)), "2 3");
}

TEST(Signature, WhoseLimitIsNotWhereItBeginsFailsTheStrictCheck)
{
    test::DirectoryPlan directory;
    directory.limit = test::codeLength - 1;
    EXPECT_EQ(test::states(programWith({directory})), "2 3");
}

TEST(Signature, ThatIsDestroyedCountsAsNone)
{
    const struct {
        const char* why;
        std::size_t offset; // in the container
        std::uint32_t value;
    } cases[] = {
        {"wrong magic", 0, 0},
        {"length of 4 GiB", 4, 0xffffffff},
        {"length beyond its room", 4, test::signatureRoom + 1},
        {"length of nothing", 4, 0},
        {"2^29 blobs, whose sizes wrap around in 32 bits", 8, 0x20000000},
        {"4 billion blobs", 8, 0xffffffff},
        {"no blobs", 8, 0},
        {"blob over the index", 16, 12},
        {"blob at the very end", 16, 0xfffffff8},
        {"no CodeDirectory in slot 0", 12, 0x1000},
        {"blob that is ignored", 16, 0},
    };
    for (const auto& c : cases) {
        Bytes program = test::makeProgram();
        test::putBig32(program, test::codeLength + c.offset, c.value);
        EXPECT_EQ(
            test::answers(program), "basic 1, strict 1, none, none, platform 0, Self-Signed Certificate")
            << c.why;
    }
    for (const std::uint32_t length : {0U, 7U, 0xffffffffU}) {
        Bytes program = test::makeProgram();
        const std::size_t blob = ByteView(program).u32(test::codeLength + 16);
        test::putBig32(program, test::codeLength + blob + 4, length);
        EXPECT_EQ(test::states(program), "1 1") << "blob of length " << length;
    }
}

TEST(Signature, CutOffInsideCountsAsNoneAndInsidePagesAsFailed)
{
    Bytes program = test::makeProgram();
    program.resize(test::codeLength + 100);
    EXPECT_EQ(test::states(program), "1 1");
}

TEST(Signature, OfTwoBlobsInOneSlotTheFirstCounts)
{
    const Bytes program = test::makeProgram();
    const ByteView code(program.data(), test::codeLength);
    const test::SignaturePlan signature;
    const Bytes first = makeDirectory(ofType(2, "first"), signature, code);
    const Bytes second = makeDirectory(ofType(2, "second"), signature, code);
    Bytes file(code.begin(), code.end());
    test::append(file, test::makeContainer({{0, first}, {0, second}}));
    file.resize(program.size());
    EXPECT_EQ(test::answers(file), "basic 2, strict 2, first, none, platform 0, Self-Signed Certificate");
}

TEST(Signature, WithAGapBetweenAlternatesLoadsNoneBehindIt)
{
    const Bytes program = test::makeProgram();
    const ByteView code(program.data(), test::codeLength);
    const test::SignaturePlan signature;
    Bytes file(code.begin(), code.end());
    test::append(file,
        test::makeContainer({{0, makeDirectory(ofType(1, "first"), signature, code)},
            {0x1001, makeDirectory(ofType(2, "behind"), signature, code)}}));
    file.resize(program.size());
    EXPECT_EQ(identifierOf(file), "first");
}

TEST(Signature, ProtectsItsBlobs)
{
    for (const std::uint32_t slot : {2U, 5U, 7U, 8U, 11U}) {
        test::ProgramPlan plan;
        plan.signature->blobs[slot] = test::makeBlob(0xfade7171, test::bytesOf("<plist/>"));
        ASSERT_EQ(test::states(makeProgram(plan)), "2 2");
        Bytes program = makeProgram(plan);
        const std::size_t blob = ByteView(program).u32(test::codeLength + 24);
        program[test::codeLength + blob + 9] ^= 1U;
        EXPECT_EQ(test::states(program), "3 3") << "changed " << slot;

        program = makeProgram(plan);
        test::putBig32(program, test::codeLength + 20, 0x777);
        EXPECT_EQ(test::states(program), "3 3") << "missing " << slot;
    }
}

TEST(Signature, IgnoresBlobsThatItHasNoHashOf)
{
    test::ProgramPlan plan;
    plan.signature->blobs[0x10002] = test::makeBlob(0xfade0b01, test::bytesOf("ticket"));
    EXPECT_EQ(test::states(makeProgram(plan)), "2 2");
}

TEST(Signature, ProtectsTheInfoPlistInTheProgram)
{
    test::ProgramPlan plan;
    plan.infoPlistSection = test::bytesOf("<plist><dict/></plist>");
    plan.signature->infoPlist = plan.infoPlistSection;
    for (const bool wide : {false, true}) {
        plan.is64Bit = wide;
        EXPECT_EQ(test::states(makeProgram(plan)), "2 2");
        test::ProgramPlan other = plan;
        other.signature->infoPlist = test::bytesOf("<plist><dict></dict></plist>");
        EXPECT_EQ(test::states(makeProgram(other)), "6 6");
        other = plan;
        other.infoPlistSection.reset();
        EXPECT_EQ(test::states(makeProgram(other)), "6 6");
    }
}

TEST(Signature, WithoutAdHocFlagAndWithoutSignerCountsAsUnsigned)
{
    test::DirectoryPlan directory;
    directory.flags = 0;
    directory.team = "TEAM123456";
    EXPECT_EQ(test::answers(programWith({directory})),
        "basic 1, strict 1, com.example.tool, none, platform 0, Self-Signed Certificate");
    test::ProgramPlan plan;
    plan.signature->directories.front().flags = 0;
    plan.signature->sign = [](const std::vector<Bytes>&) { return Bytes(); };
    EXPECT_EQ(test::states(makeProgram(plan)), "1 1") << "an empty signer blob";
}

TEST(Signature, AdHocIgnoresTheSignerBlob)
{
    test::ProgramPlan plan;
    plan.signature->sign = [](const std::vector<Bytes>&) { return test::bytesOf("rubbish"); };
    EXPECT_EQ(test::states(makeProgram(plan)), "2 2");
}

TEST(Signature, AdHocWithAChangedIdentifierIsValidUnderTheNewName)
{
    Bytes program = test::makeProgram();
    const std::string_view text = ByteView(program).text();
    program[text.find("com.example.tool")] = 'X';
    EXPECT_EQ(test::answers(program),
        "basic 2, strict 2, Xom.example.tool, none, platform 0, Self-Signed Certificate");
}

} // namespace quorvane::codesign
