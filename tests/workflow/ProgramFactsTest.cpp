#include "workflow/ProgramFacts.h"

#include "codesign/Digests.h"
#include "tests/support/Answers.h"
#include "tests/support/FakeProgramFacts.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <unistd.h>

namespace quorvane::workflow {

TEST(ProgramFactsOnDisk, AnythingAtThePathExists)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("file", "x");
    std::filesystem::create_symlink("nowhere", folder.path("broken"));
    EXPECT_TRUE(programFactsOnDisk().exists(file));
    EXPECT_TRUE(programFactsOnDisk().exists(folder.path()));
    EXPECT_FALSE(programFactsOnDisk().exists(folder.path("broken")));
    EXPECT_FALSE(programFactsOnDisk().exists(folder.path("none")));
    EXPECT_FALSE(programFactsOnDisk().exists(""));
    EXPECT_FALSE(programFactsOnDisk().exists(file + std::string(1, '\0') + "more"));
}

TEST(ProgramFactsOnDisk, TellTheTeamAndThePlatformOfASignedProgram)
{
    const test::TemporaryFolder folder;
    test::ProgramPlan plan;
    plan.signature = test::signedPlan();
    plan.signature->directories.front().platform = 14;
    const std::string program = folder.write("program", test::makeProgram(plan));
    const std::string plain = folder.write("plain", test::makeUnsignedProgram());

    ProgramFacts& facts = programFactsOnDisk();
    EXPECT_EQ(facts.team(program), "TEAM123456");
    EXPECT_EQ(facts.platformIdentifier(program), 14U);
    EXPECT_EQ(facts.team(plain), std::nullopt);
    EXPECT_EQ(facts.platformIdentifier(plain), 0U);
    EXPECT_EQ(facts.platformIdentifier(folder.path("missing")), 0U);
}

TEST(ProgramFactsOnDisk, TellFoldersFromFiles)
{
    const test::TemporaryFolder folder;
    EXPECT_TRUE(programFactsOnDisk().isFolder(folder.path()));
    EXPECT_FALSE(programFactsOnDisk().isFolder(folder.write("file", "")));
}

TEST(ProgramFactsOnDisk, WhatCannotBeReadHasNoDigest)
{
    const test::TemporaryFolder folder;
    EXPECT_EQ(programFactsOnDisk().sha256(folder.write("empty", "")), test::sha256OfNothing);
    for (const std::string& path : {folder.path("missing"), folder.path()}) {
        EXPECT_EQ(programFactsOnDisk().sha1(path), std::nullopt);
        EXPECT_EQ(programFactsOnDisk().sha256(path), std::nullopt);
        EXPECT_EQ(programFactsOnDisk().team(path), std::nullopt);
    }
}

TEST(ProgramFactsOnDisk, KnowNothingOfWhatCannotBeRead)
{
    const test::TemporaryFolder folder;
    EXPECT_TRUE(programFactsOnDisk().isReadable(folder.write("file", "")));
    EXPECT_FALSE(programFactsOnDisk().isReadable(folder.path("missing")));
    EXPECT_FALSE(programFactsOnDisk().isReadable("/dev/null"));
}

TEST(ProgramFactsOnDisk, FollowAFileThatChanges)
{
    // given a file not changed recently, so that its facts are cached
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", "before");
    sleep(3);
    ProgramFacts& facts = programFactsOnDisk();
    EXPECT_EQ(facts.sha256(path), codesign::sha256("before"));
    EXPECT_EQ(facts.sha256(path), codesign::sha256("before"));
    EXPECT_EQ(facts.sha1(path), codesign::sha1("before"));

    // when other contents of the same length replace it, with the same modification time
    const auto time = std::filesystem::last_write_time(path);
    folder.write("program", "after!");
    std::filesystem::last_write_time(path, time);

    // then all facts are new
    EXPECT_EQ(facts.sha1(path), codesign::sha1("after!"));
    EXPECT_EQ(facts.sha256(path), codesign::sha256("after!"));
    std::filesystem::remove(path);
    EXPECT_EQ(facts.sha256(path), std::nullopt);
}

TEST(ProgramFactsOnDisk, AChangeRightAfterTheAnswerIsSeen)
{
    const test::TemporaryFolder folder;
    for (const char* contents : {"one", "two", "six", "ten"}) {
        const std::string path = folder.write("program", contents);
        EXPECT_EQ(programFactsOnDisk().sha1(path), codesign::sha1(contents));
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
    std::filesystem::create_symlink("/Library/Info.plist", folder.path("volume/X.app/Contents/Info.plist"));
    std::error_code error;
    const auto facts
        = programFactsWithin(*platform::FileRoot::at(folder.path("volume"), error), test::testAnchor());

    // when the bundle or its program is checked, then the signature with its Info.plist is valid
    for (const char* path : {"/X.app", "/X.app/Contents/MacOS/tool"}) {
        EXPECT_EQ(facts->team(path), "TEAM123456") << path;
        EXPECT_EQ(facts->teamProof(path), TeamProof::proven) << path;
    }
}

TEST(ProgramFactsWithin, AnotherRootAreThoseOfItsFiles)
{
    const test::TemporaryFolder folder;
    folder.write("bin/tool", "inside");
    std::filesystem::create_symlink("/bin/tool", folder.path("link"));
    std::error_code error;
    const auto root = platform::FileRoot::at(folder.path(), error);
    ASSERT_TRUE(root);
    const auto facts = programFactsWithin(*root);
    EXPECT_TRUE(facts->exists("/bin/tool"));
    EXPECT_FALSE(facts->exists(folder.path("bin/tool")));
    EXPECT_TRUE(facts->isFolder("/bin"));
    EXPECT_EQ(facts->sha256("/link"), codesign::sha256("inside"));
    EXPECT_EQ(facts->sha1("/link"), codesign::sha1("inside"));
}

TEST(ProgramFactsOfNothing, KnowNoFile)
{
    ProgramFacts& nothing = programFactsOfNothing();
    EXPECT_FALSE(nothing.exists("/"));
    EXPECT_FALSE(nothing.isFolder("/"));
    EXPECT_FALSE(nothing.isReadable("/proc/self/exe"));
    EXPECT_EQ(nothing.sha1("/proc/self/exe"), std::nullopt);
    EXPECT_EQ(nothing.sha256("/proc/self/exe"), std::nullopt);
    EXPECT_EQ(nothing.team("/proc/self/exe"), std::nullopt);
}

} // namespace quorvane::workflow
