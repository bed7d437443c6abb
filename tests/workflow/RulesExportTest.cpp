#include "workflow/RulesExport.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>

namespace quorvane {

namespace {

const std::string rules = "; a comment\noption x 1\nallow prefix \"/\" \"any\" r\nno rule at all";

class RulesExport : public testing::Test {
protected:
    std::size_t files() const
    {
        const std::filesystem::directory_iterator all(folder.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    const TemporaryFolder folder;
    const std::string source = folder.write("ann.quorvane.rc", rules);
};

} // namespace

TEST_F(RulesExport, KeepsEveryByte)
{
    exportRulesFile(source, folder.path("out.quorv"));
    EXPECT_EQ(TemporaryFolder::contents(folder.path("out.quorv")), rules);
    EXPECT_EQ(TemporaryFolder::contents(source), rules);
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, ReplacesAFileThatIsThere)
{
    const std::string out = folder.write("out.quorv", "something longer than the rules" + rules);
    exportRulesFile(source, out);
    EXPECT_EQ(TemporaryFolder::contents(out), rules);
}

TEST_F(RulesExport, ReplacesALinkAndNotWhatItLeadsTo)
{
    const std::string other = folder.write("other", "other");
    std::filesystem::create_symlink(other, folder.path("out.quorv"));
    exportRulesFile(source, folder.path("out.quorv"));
    EXPECT_FALSE(std::filesystem::is_symlink(folder.path("out.quorv")));
    EXPECT_EQ(TemporaryFolder::contents(folder.path("out.quorv")), rules);
    EXPECT_EQ(TemporaryFolder::contents(other), "other");
}

TEST_F(RulesExport, OntoItselfLosesNothing)
{
    std::filesystem::create_symlink(source, folder.path("link"));
    std::filesystem::create_hard_link(source, folder.path("second"));
    for (const auto& itself : {source, folder.path("link"), folder.path("second")}) {
        exportRulesFile(source, itself);
        EXPECT_EQ(TemporaryFolder::contents(source), rules) << itself;
    }
    EXPECT_EQ(files(), 3U);
}

TEST_F(RulesExport, WithoutARulesFileLeavesTheDestinationAlone)
{
    const std::string out = folder.write("out.quorv", "before");
    exportRulesFile(folder.path("missing"), out);
    EXPECT_EQ(TemporaryFolder::contents(out), "before");
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, IntoAFolderThatIsGoneOrAPipeInPlaceOfTheRulesDoesNothing)
{
    exportRulesFile(source, folder.path("gone/out.quorv"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    exportRulesFile(folder.path("pipe"), folder.path("out.quorv"));
    EXPECT_EQ(files(), 2U);
}

} // namespace quorvane
