#include "tests/codesign/FailingReads.h"
#include "codesign/Digests.h"
#include "codesign/ProgramCode.h"
#include "codesign/SignatureQueries.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <set>

namespace quorvane::codesign {

namespace {

// Repeats the query once for every read that it makes, with that read failing; returns all results.
template <class Ask> auto answersWithEachReadFailing(test::ReadFailure failure, const Ask& ask)
{
    std::set<decltype(ask())> answers;
    for (std::size_t position = 0;; ++position) {
        const test::FailingReads reads(failure, position);
        auto answer = ask();
        if (reads.calls() <= position)
            break; // it makes no further reads
        answers.insert(std::move(answer));
    }
    return answers;
}

// Programs that make every kind of read, by name.
std::map<std::string, std::string> programsIn(const test::TemporaryFolder& folder)
{
    const std::string info = "<plist><dict><key>CFBundleExecutable</key><string>main</string></dict></plist>";
    const std::string seal = "<plist><dict><key>files2</key><dict/><key>rules2</key><dict><key>^Info</key>"
                             "<false/></dict></dict></plist>";
    test::ProgramPlan sealed;
    sealed.signature->infoPlist = test::bytesOf(info);
    sealed.signature->resourceSeal = test::bytesOf(seal);
    folder.write("X.app/Contents/Info.plist", info);
    folder.write("X.app/Contents/_CodeSignature/CodeResources", seal);
    folder.write("X.app/Contents/MacOS/main", makeProgram(sealed));
    test::ProgramPlan withSection;
    withSection.infoPlistSection = test::bytesOf(info);
    withSection.signature->infoPlist = withSection.infoPlistSection;
    return {
        {"signed", folder.write("signed", test::signedProgram())},
        {"section", folder.write("section", makeProgram(withSection))},
        {"universal",
            folder.write("universal",
                test::makeUniversal(
                    {{test::x86_64, test::makeUnsignedProgram()}, {test::arm64, test::makeProgram()}}))},
        {"bundle", folder.path("X.app")},
        {"executable of a bundle", folder.path("X.app/Contents/MacOS/main")},
    };
}

std::int32_t strictStateAt(const std::string& path)
{
    return test::stateAt(path, strictFlags);
}

} // namespace

class HarmlessReads : public testing::TestWithParam<test::ReadFailure> { };

TEST_P(HarmlessReads, ChangeNoAnswer)
{
    const test::TemporaryFolder folder;
    for (const auto& program : programsIn(folder)) {
        const auto& name = program.first;
        const auto& path = program.second;
        const std::string answer = test::answersAt(path);
        EXPECT_EQ(answer.substr(0, 17), "basic 2, strict 2") << name;
        EXPECT_EQ(answersWithEachReadFailing(GetParam(), [&path] { return test::answersAt(path); }),
            std::set{answer})
            << name;
        EXPECT_EQ(
            answersWithEachReadFailing(GetParam(), [&path] { return test::stateAt(path, 0); }), std::set{2})
            << name;
        EXPECT_EQ(answersWithEachReadFailing(GetParam(), [&path] { return sha256OfFile(path); }).size(),
            path == folder.path("X.app") ? 0U : 1U)
            << name;
    }
}

INSTANTIATE_TEST_SUITE_P(ThatAreCutShortOrInterrupted, HarmlessReads,
    testing::Values(test::ReadFailure::cutShort, test::ReadFailure::interrupted));

TEST(FailingReads, NeverMakeAProgramUnsignedOrValid)
{
    // 3: pages end too early; 4: pages cannot be read; 6: unknown
    const test::TemporaryFolder folder;
    for (const auto& program : programsIn(folder)) {
        const auto& name = program.first;
        const auto& path = program.second;
        const auto strict = [&path] { return strictStateAt(path); };
        const auto everything = [&path] { return test::stateAt(path, 0); };
        EXPECT_EQ(answersWithEachReadFailing(test::ReadFailure::error, strict), (std::set{4, 6})) << name;
        EXPECT_EQ(answersWithEachReadFailing(test::ReadFailure::end, strict), (std::set{3, 6})) << name;
        EXPECT_EQ(answersWithEachReadFailing(test::ReadFailure::error, everything), (std::set{4, 6})) << name;
        EXPECT_EQ(answersWithEachReadFailing(test::ReadFailure::end, everything), (std::set{3, 6})) << name;
    }
}

TEST(FailingReads, OfASignatureLeaveNothingKnownOfTheProgram)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("signed", test::signedProgram());
    for (const test::ReadFailure failure : {test::ReadFailure::error, test::ReadFailure::end}) {
        const auto answers = answersWithEachReadFailing(
            failure, [&path] { return ProgramCode::atPath(path, test::testAnchor()) == nullptr; });
        EXPECT_EQ(answers, std::set{true});
    }
}

TEST(FailingReads, OfAnUnsignedProgramNeverCallItUnsigned)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("unsigned", test::makeUnsignedProgram());
    ASSERT_EQ(strictStateAt(path), 1);
    for (const test::ReadFailure failure : {test::ReadFailure::error, test::ReadFailure::end})
        EXPECT_EQ(answersWithEachReadFailing(failure, [&path] { return strictStateAt(path); }), std::set{6});
}

TEST(FailingReads, OfADigestedFileGiveNoDigest)
{
    const test::TemporaryFolder folder;
    const std::string path = folder.write("file", std::string(600000, 'x'));
    EXPECT_EQ(answersWithEachReadFailing(test::ReadFailure::error, [&path] { return sha256OfFile(path); }),
        std::set<std::optional<std::string>>{std::nullopt});
    EXPECT_EQ(answersWithEachReadFailing(test::ReadFailure::cutShort, [&path] { return sha256OfFile(path); }),
        std::set<std::optional<std::string>>{sha256(std::string(600000, 'x'))});
}

} // namespace quorvane::codesign
