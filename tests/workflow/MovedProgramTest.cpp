#include "workflow/MovedProgram.h"

#include "codesign/Digests.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::workflow {

namespace {

class MovedProgramTest : public testing::Test {
protected:
    // Creates a program in the folder, which then exists for the facts.
    std::string program(const std::string& path)
    {
        const std::string whole = folder.path(path);
        std::filesystem::create_directories(std::filesystem::path(whole).parent_path());
        folder.write(path, "");
        for (std::filesystem::path each = std::filesystem::path(whole).parent_path();
             each != each.root_path(); each = each.parent_path())
            facts.folders.insert(each.string());
        facts.existing.insert(whole);
        return whole;
    }
    std::string search(const std::string& path, const std::vector<std::string>& constraints = {})
    {
        std::string found;
        for (const ProgramCandidate& candidate : candidatesForMoved(folder.path(path), constraints, place))
            found += (candidate.reason == ProgramCandidate::sameConstraint ? "same " : "version ")
                + candidate.path.substr(folder.path().size() + 1) + "\n";
        return found;
    }

    test::TemporaryFolder folder;
    test::FakeProgramFacts facts;
    RulesPlace place = RulesPlace::of(facts);
};

} // namespace

TEST_F(MovedProgramTest, OffersOtherVersionsBesideIt)
{
    program("Notes 1.3.app/Contents/MacOS/Notes");
    program("Maps 1.3.app/Contents/MacOS/Notes");
    program("Notes 1.4.app/Contents/MacOS/Other");
    EXPECT_EQ(search("Notes 1.2.app/Contents/MacOS/Notes"), "version Notes 1.3.app/Contents/MacOS/Notes\n");
}

TEST_F(MovedProgramTest, OffersVersionsNumberedInFolderAndNameAlike)
{
    program("tool-1.10/bin/tool-1.10");
    EXPECT_EQ(search("tool-1.2/bin/tool-1.2"), "version tool-1.10/bin/tool-1.10\n");
}

TEST_F(MovedProgramTest, OffersNewerVersionsFirst)
{
    program("python3.9");
    program("python3.12");
    program("python3.11");
    EXPECT_EQ(search("python3.10"), "version python3.12\nversion python3.11\nversion python3.9\n");
}

TEST_F(MovedProgramTest, OffersOtherVersionsWhileTheFormerOneIsThereStill)
{
    program("python3.11");
    program("python3.12");
    EXPECT_EQ(search("python3.11"), "version python3.12\n");
}

TEST_F(MovedProgramTest, OffersAProgramOfTheSameNameThatMeetsTheConstraint)
{
    const std::string bound = program("Apps/Notes.app/Contents/MacOS/Notes");
    program("Others/Notes.app/Contents/MacOS/Notes");
    facts.teams[bound] = "TEAM";
    EXPECT_EQ(
        search("Notes.app/Contents/MacOS/Notes", {"TEAM"}), "same Apps/Notes.app/Contents/MacOS/Notes\n");
    EXPECT_EQ(search("Notes.app/Contents/MacOS/Notes", {"OTHER", ""}), "");
    EXPECT_EQ(search("Notes.app/Contents/MacOS/Notes"), "");
}

TEST_F(MovedProgramTest, KnowsAProgramByItsDigestsToo)
{
    const std::string bound = program("new/tool");
    facts.sha256s[bound] = std::string(64, 'a');
    facts.sha1s[bound] = std::string(40, 'b');
    EXPECT_EQ(search("tool", {std::string(64, 'a')}), "same new/tool\n");
    EXPECT_EQ(search("old/tool", {std::string(40, 'b')}), "same new/tool\n");
}

TEST_F(MovedProgramTest, OffersWhatMeetsTheConstraintBeforeNewerVersions)
{
    const std::string bound = program("tool-2");
    program("tool-3");
    facts.teams[bound] = "TEAM";
    EXPECT_EQ(search("tool-1", {"TEAM"}), "same tool-2\nversion tool-3\n");
}

TEST_F(MovedProgramTest, OffersTwentyProgramsAtMost)
{
    for (int number = 0; number < 30; ++number)
        program("tool-" + std::to_string(number));
    const std::string found = search("tool-99");
    EXPECT_EQ(std::count(found.begin(), found.end(), '\n'), 20);
}

TEST_F(MovedProgramTest, OffersNothingForWhatIsNoPath)
{
    for (const std::string& path : {std::string(), std::string("any"), "/" + std::string(10000, '1')})
        EXPECT_TRUE(candidatesForMoved(path, {"TEAM"}, place).empty()) << path.substr(0, 10);
}

TEST(MovedProgram, IsLookedForOnTheVolumeThatTheRulesAreFor)
{
    // given a program that has moved on a volume, and another version of it on this machine
    const test::TemporaryFolder folder;
    folder.write("tool-2", "");
    folder.write("volume/opt/tools/tool-1", "tool");
    folder.write("volume" + folder.path("tool-3"), "");
    std::error_code error;
    const auto volume = RulesPlace::folder(folder.path("volume"), error);

    const ProgramCandidate moved{"/opt/tools/tool-1", ProgramCandidate::sameConstraint};
    const ProgramCandidate later{folder.path("tool-3"), ProgramCandidate::otherVersion};
    EXPECT_EQ(candidatesForMoved("/opt/tool-1", {codesign::sha256("tool")}, *volume), std::vector{moved});
    EXPECT_EQ(candidatesForMoved(folder.path("tool-1"), {}, *volume), std::vector{later});
    EXPECT_TRUE(candidatesForMoved(folder.path("tool-1"), {}, RulesPlace::nowhere()).empty());
}

TEST(NamedProgram, IsTheProcessesOwnProgramElseItsParentOrAncestor)
{
    const struct {
        const char* process;
        const char* program;
    } cases[] = {{"/bin/a", "/bin/a"}, {"/bin/a (-x)", "/bin/a"}, {"/bin/a via /bin/b", "/bin/a"},
        {"any via /bin/b", "/bin/b"}, {"any ancestor /bin/c", "/bin/c"}, {"any", ""}, {"any via any", ""},
        {"any via Tool", ""}, {"", ""}};
    for (const auto& c : cases)
        EXPECT_EQ(namedProgram(c.process), c.program) << c.process;
}

} // namespace quorvane::workflow
