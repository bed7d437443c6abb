#include "workflow/RulesExport.h"

#include "rules/RulesContent.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quorvane::workflow {

namespace {

const std::string rules = "; a comment\noption x 1\nallow prefix \"/\" \"any\" r\nno rule at all";

class RulesExport : public testing::Test {
protected:
    std::size_t files() const
    {
        const std::filesystem::directory_iterator all(folder.path());
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }

    // The result of `work` in an ordinary user's process whose working folder permits no new files.
    std::string answerWhereNoFileCanBeMade(const std::function<std::string()>& work) const
    {
        std::filesystem::permissions(source, std::filesystem::perms(0666));
        std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
        const std::string answer = test::answerOfChild(
            [&] { return test::becomeOrdinaryUser() ? work() : std::string("still root"); });
        std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
        return answer;
    }

    const test::TemporaryFolder folder;
    const std::string source = folder.write("ann.quorvane.rc", rules);
};

std::string messageOf(const rules::WriteResult& result)
{
    return (result.opened ? "written " : "not written ") + result.message.value_or("");
}

struct stat statusOf(const std::string& path)
{
    struct stat status { };
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status;
}

// Limits the size of files for this process.
void limitFiles(std::size_t size)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{size, size};
    setrlimit(RLIMIT_FSIZE, &limit);
}

const std::vector<rules::RuleRef> oneRule{
    test::policyRule({.policyType = 1, .path = "/a", .processName = "any", .operations = 1})};
const std::string oneLine = "allow path \"/a\" \"any\" r \"\" \"\" \"0\"\n";

} // namespace

TEST_F(RulesExport, KeepsEveryByte)
{
    exportRulesFile(source, folder.path("out.quorv"));
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("out.quorv")), rules);
    EXPECT_EQ(test::TemporaryFolder::contents(source), rules);
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, ReplacesAFileThatIsThere)
{
    const std::string out = folder.write("out.quorv", "something longer than the rules" + rules);
    exportRulesFile(source, out);
    EXPECT_EQ(test::TemporaryFolder::contents(out), rules);
}

TEST_F(RulesExport, ReplacesALinkAndNotWhatItLeadsTo)
{
    const std::string other = folder.write("other", "other");
    std::filesystem::create_symlink(other, folder.path("out.quorv"));
    exportRulesFile(source, folder.path("out.quorv"));
    EXPECT_FALSE(std::filesystem::is_symlink(folder.path("out.quorv")));
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("out.quorv")), rules);
    EXPECT_EQ(test::TemporaryFolder::contents(other), "other");
}

TEST_F(RulesExport, OntoItselfLosesNothing)
{
    std::filesystem::create_symlink(source, folder.path("link"));
    std::filesystem::create_hard_link(source, folder.path("second"));
    for (const auto& itself : {source, folder.path("link"), folder.path("second")}) {
        exportRulesFile(source, itself);
        EXPECT_EQ(test::TemporaryFolder::contents(source), rules) << itself;
    }
    EXPECT_EQ(files(), 3U);
}

TEST_F(RulesExport, WithoutARulesFileLeavesTheDestinationAlone)
{
    const std::string out = folder.write("out.quorv", "before");
    exportRulesFile(folder.path("missing"), out);
    EXPECT_EQ(test::TemporaryFolder::contents(out), "before");
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, IntoAFolderThatIsGoneOrAPipeInPlaceOfTheRulesDoesNothing)
{
    exportRulesFile(source, folder.path("gone/out.quorv"));
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    exportRulesFile(folder.path("pipe"), folder.path("out.quorv"));
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, ThatFailsHalfWayLeavesTheDestinationAlone)
{
    const std::string out = folder.write("out.quorv", "before");
    EXPECT_EQ(test::answerOfChild([&] {
        limitFiles(rules.size() - 1);
        exportRulesFile(source, out);
        return test::TemporaryFolder::contents(out);
    }),
        "before");
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, LeavesAPipeOrDeviceWhereItIs)
{
    const std::string out = folder.path("pipe");
    ASSERT_EQ(mkfifo(out.c_str(), 0604), 0);
    exportRulesFile(source, out);
    EXPECT_TRUE(S_ISFIFO(statusOf(out).st_mode));
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, IsWrittenInPlaceWhereTheFolderAllowsNoSecondFile)
{
    const std::string out = folder.write("out.quorv", "something longer than the rules" + rules);
    std::filesystem::permissions(out, std::filesystem::perms(0666));
    EXPECT_EQ(answerWhereNoFileCanBeMade([&] {
        exportRulesFile(source, out);
        return test::TemporaryFolder::contents(out);
    }),
        rules);
}

TEST_F(RulesExport, OfManyRulesWritesEachLineOnce)
{
    std::vector<rules::RuleRef> many;
    std::string lines;
    for (int number = 0; number < 10'000; ++number) {
        const std::string path = "/folder/file-" + std::to_string(number);
        many.push_back(test::policyRule({.path = path, .processName = "any", .operations = 1}));
        lines += "allow prefix \"" + path + "\" \"any\" r \"\" \"\" \"0\"\n";
    }
    const std::string out = folder.path("out.quorv");
    EXPECT_EQ(messageOf(exportRules(out, many)), "written ");
    EXPECT_EQ(test::TemporaryFolder::contents(out), lines);
}

TEST_F(RulesExport, OfRulesReplacesAFileByAWholeOne)
{
    const std::string out = folder.write("out.quorv", "something longer than the rules" + rules);
    const auto before = statusOf(out).st_ino;
    const rules::WriteResult result = exportRules(out, oneRule);

    EXPECT_EQ(messageOf(result), "written ");
    EXPECT_EQ(test::TemporaryFolder::contents(out), oneLine);
    EXPECT_NE(statusOf(out).st_ino, before);
    EXPECT_EQ(statusOf(out).st_mode & 07777U, 0640U);
    std::error_code error;
    EXPECT_EQ(result.identity, platform::FileIdentity::ofPath(out, error));
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, OfRulesThatFailsHalfWayLeavesTheDestinationAloneAndSaysWhy)
{
    const std::string out = folder.write("out.quorv", "before");
    for (const std::string& destination : {out, folder.path("new.quorv")}) {
        EXPECT_EQ(test::answerOfChild([&] {
            limitFiles(oneLine.size() - 1);
            return messageOf(exportRules(destination, oneRule));
        }),
            "not written Failed write() operation on file '" + destination + "' File too large (27)");
    }
    EXPECT_EQ(test::TemporaryFolder::contents(out), "before");
    EXPECT_EQ(files(), 2U);
}

TEST_F(RulesExport, OfRulesRefusesWhatIsNoRegularFile)
{
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0604), 0);
    std::filesystem::create_symlink(source, folder.path("link"));
    const struct {
        std::string destination;
        const char* reason;
    } cases[] = {
        {pipe, "Operation not supported (95)"},
        {"/dev/null", "Operation not supported (95)"},
        {folder.path(), "Is a directory (21)"},
        {folder.path("link"), "Too many levels of symbolic links (40)"},
        {folder.path("none/out"), "No such file or directory (2)"},
    };
    const mode_t deviceMode = statusOf("/dev/null").st_mode;
    for (const auto& c : cases)
        EXPECT_EQ(messageOf(exportRules(c.destination, oneRule)),
            "not written Failed to open file '" + c.destination + "' for writing: " + c.reason);
    EXPECT_EQ(statusOf(pipe).st_mode & 07777U, 0604U);
    EXPECT_EQ(statusOf("/dev/null").st_mode, deviceMode);
    EXPECT_EQ(test::TemporaryFolder::contents(source), rules);
}

TEST_F(RulesExport, OfRulesRefusesAFileThatMayNotBeWrittenThoughItCouldBeReplaced)
{
    const std::string out = folder.write("out.quorv", "before");
    std::filesystem::permissions(out, std::filesystem::perms(0444));
    std::filesystem::permissions(folder.path(), std::filesystem::perms::all);
    EXPECT_EQ(test::answerOfChild([&] {
        return test::becomeOrdinaryUser() ? messageOf(exportRules(out, oneRule)) : std::string("still root");
    }),
        "not written Failed to open file '" + out + "' for writing: Permission denied (13)");
    EXPECT_EQ(test::TemporaryFolder::contents(out), "before");
}

TEST_F(RulesExport, OfRulesIsWrittenInPlaceWhereTheFolderAllowsNoSecondFile)
{
    const std::string out = folder.write("out.quorv", "something longer than the rules" + rules);
    std::filesystem::permissions(out, std::filesystem::perms(0666));
    EXPECT_EQ(answerWhereNoFileCanBeMade([&] { return messageOf(exportRules(out, oneRule)); }), "written ");
    EXPECT_EQ(test::TemporaryFolder::contents(out), oneLine);
}

TEST_F(RulesExport, OfRulesKeepsTheOtherNamesOfTheDestination)
{
    const std::string out = folder.write("out.quorv", "before");
    std::filesystem::create_hard_link(out, folder.path("second"));
    EXPECT_EQ(messageOf(exportRules(out, oneRule)), "written ");
    EXPECT_EQ(test::TemporaryFolder::contents(folder.path("second")), oneLine);
    EXPECT_EQ(statusOf(out).st_nlink, 2U);
}

TEST_F(RulesExport, OfRulesKeepsTheOwnerOfTheDestination)
{
    const std::string out = folder.write("out.quorv", "before");
    constexpr uid_t nobody = 65534;
    if (chown(out.c_str(), nobody, nobody) != 0)
        GTEST_SKIP() << "only root can give files away";
    EXPECT_EQ(messageOf(exportRules(out, oneRule)), "written ");
    EXPECT_EQ(statusOf(out).st_uid, nobody);
    EXPECT_EQ(statusOf(out).st_gid, nobody);
    EXPECT_EQ(test::TemporaryFolder::contents(out), oneLine);
}

} // namespace quorvane::workflow
