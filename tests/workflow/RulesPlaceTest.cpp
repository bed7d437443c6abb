#include "workflow/RulesPlace.h"

#include "codesign/Digests.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestRules.h"
#include "workflow/ApplicationValidation.h"
#include "workflow/RuleFindings.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace quorvane::workflow {

namespace {

namespace fs = std::filesystem;

RulesPlace placeAt(const std::string& folder)
{
    std::error_code error;
    return *RulesPlace::folder(folder, error);
}

bool isValid(const RulesPlace& place, const std::string& process, const std::string& constraint = {})
{
    return isValidApplicationPath(
        rules::PolicyRule({.processName = process, .constraint = constraint}), "program", place);
}

} // namespace

TEST(RulesPlace, AFolderStandsForTheRoot)
{
    // given a program and a file in a folder, a link to each, and a file outside
    const test::TemporaryFolder folder;
    folder.write("volume/bin/tool", "tool");
    folder.write("volume/etc/hosts", "");
    const std::string outside = folder.write("outside", "");
    fs::create_symlink("/bin/tool", folder.path("volume/link"));
    fs::create_symlink(outside, folder.path("volume/away"));
    const RulesPlace place = placeAt(folder.path("volume"));

    // when rules are looked up there, then this machine's files do not count
    EXPECT_TRUE(isValid(place, "/bin/tool", codesign::sha256("tool")));
    EXPECT_TRUE(isValid(place, "/link", codesign::sha1("tool")));
    EXPECT_FALSE(isValid(place, "/bin/tool", codesign::sha256("other")));
    EXPECT_FALSE(isValid(place, "/bin/sh"));
    EXPECT_FALSE(isValid(place, outside));
    EXPECT_FALSE(place.isMissing("/etc/hosts"));
    EXPECT_TRUE(place.isMissing("/etc/passwd"));
    EXPECT_TRUE(place.isMissing("/away"));
    EXPECT_FALSE(place.isNowhere());
}

TEST(RulesPlace, HomeFoldersOfAnotherMachineAreUnknown)
{
    const test::TemporaryFolder folder;
    const RulesPlace place = placeAt(folder.path());
    EXPECT_FALSE(place.isMissing("~/none"));
    EXPECT_TRUE(isValid(place, "~/bin/tool", "TEAM123456"));
    EXPECT_FALSE(RulesPlace::thisMachine().withoutHomes().isMissing("~/none"));
    EXPECT_TRUE(RulesPlace::thisMachine().withoutHomes().isMissing(folder.path("none")));
    EXPECT_TRUE(RulesPlace::thisMachine().isMissing("~/none"));
}

TEST(RulesPlace, NowhereNothingIsMissing)
{
    const RulesPlace place = RulesPlace::nowhere();
    EXPECT_TRUE(place.isNowhere());
    EXPECT_FALSE(place.isMissing("/none"));
    EXPECT_TRUE(isValid(place, "/none via /none", "TEAM123456"));
    EXPECT_FALSE(place.facts().exists("/bin/sh"));
}

TEST(RulesPlace, IsAFolderOrNone)
{
    const test::TemporaryFolder folder;
    std::error_code error;
    EXPECT_FALSE(RulesPlace::folder(folder.path("none"), error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(RulesPlace::folder(folder.write("file", ""), error));
}

} // namespace quorvane::workflow
