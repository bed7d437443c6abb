#include "workflow/RulesPlace.h"

#include "codesign/Digests.h"
#include "tests/support/Answers.h"
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

TEST(ProgramFactsWithin, ReadABundleWhoseLinksStayInTheFolder)
{
    // given a bundle whose Info.plist is an absolute link, valid on that machine
    const test::TemporaryFolder folder;
    const std::string info = "<plist version=\"1.0\"><dict><key>CFBundleExecutable</key>"
                             "<string>tool</string></dict></plist>";
    test::ProgramPlan plan;
    plan.signature = test::signedPlan();
    plan.signature->infoPlist = codesign::Bytes(info.begin(), info.end());
    folder.write("volume/X.app/Contents/MacOS/tool", test::makeProgram(plan));
    folder.write("volume/Library/Info.plist", info);
    fs::create_symlink("/Library/Info.plist", folder.path("volume/X.app/Contents/Info.plist"));
    std::error_code error;
    const auto facts
        = programFactsWithin(*platform::FileRoot::at(folder.path("volume"), error), test::testAnchor());

    // when the bundle or its program is checked, then the signature with its Info.plist is valid
    for (const char* path : {"/X.app", "/X.app/Contents/MacOS/tool"}) {
        EXPECT_EQ(facts->team(path), "TEAM123456") << path;
        EXPECT_EQ(facts->teamProof(path), TeamProof::proven) << path;
    }
}

TEST(ProgramFactsWithin, ATeamIsProvenByTheVendorsRootAndTheCodeThatWasSigned)
{
    const test::TemporaryFolder folder;
    codesign::Bytes program = test::signedProgram();
    const std::string intact = folder.write("intact", program);
    program[program.size() - test::signatureRoom - 10] ^= 1U;
    const std::string changed = folder.write("changed", program);
    const auto facts = programFactsWithin({}, test::testAnchor());

    EXPECT_EQ(facts->teamProof(intact), TeamProof::proven);
    EXPECT_EQ(facts->teamProof(changed), TeamProof::codeDiffers);
    EXPECT_EQ(facts->team(changed), "TEAM123456") << "the name is told all the same";
    EXPECT_EQ(programFactsOnDisk().team(intact), "TEAM123456") << "whatever the root";
    EXPECT_EQ(programFactsOnDisk().teamProof(intact), TeamProof::foreignRoot);
}

} // namespace quorvane::workflow
