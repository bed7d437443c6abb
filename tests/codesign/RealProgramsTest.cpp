#include "codesign/Codesign.h"
#include "codesign/Digests.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

// Programs as signed and published by their makers, fetched by tools/fetch_real_programs. The expected facts
// were determined by other means.

namespace quorvane::codesign {

namespace {

class RealPrograms : public testing::Test {
protected:
    void SetUp() override
    {
        const char* wanted = std::getenv("QUORVANE_REAL_PROGRAMS");
        if (wanted == nullptr || std::string(wanted) != "1")
            GTEST_SKIP()
                << "run tools/fetch_real_programs and set QUORVANE_REAL_PROGRAMS=1 to test real programs";
    }

    static std::string path(const std::string& name) { return QUORVANE_REAL_PROGRAMS_FOLDER "/" + name; }
};

std::string facts(const std::string& path)
{
    return "basic " + std::to_string(getStaticCodeSignState(path)) + ", strict "
        + std::to_string(getStaticStrictCodeSignState(path)) + ", "
        + getStaticCodeSignIdentifier(path).value_or("none") + ", "
        + getStaticCodeSignTeamIdentifier(path).value_or("none") + ", platform "
        + std::to_string(getStaticCodeSignPlatformIdentifier(path)) + ", " + getStaticCodeSignCertInfo(path);
}

constexpr const char* nodeFacts = "basic 2, strict 2, node, HX7739G8FX, platform 0, "
                                  "Developer ID Application: Node.js Foundation (HX7739G8FX)";

} // namespace

TEST_F(RealPrograms, AreTheOnesThatTheFactsWereReadOff)
{
    const struct {
        const char* name;
        const char* digest;
    } cases[] = {
        {"node-18.19.1-arm64", "3a13e47059d5145d469f5fe324395ee9024ab20f6170718f75517fdf32b3340a"},
        {"node-12.22.9-x64", "667f1aa36a0c905c906ed451ccbed9ac4d6cfdbb9663b5916e1a4b06ffe0cd79"},
        {"esbuild-0.21.5-arm64", "b81b084018b48549fced4d72ac6a9d820aec907aff4ec546aef4a8703fee8dcc"},
        {"esbuild-0.21.5-x64", "c50b052b009c7f310191d14056bcd4deefe423400212207acd8b4544ef1c0a4f"},
        {"fsevents-2.3.3-universal", "40f2f51199e4f5fc46fa6b985fb3461bb63e6cd86c62bfa9bcee45ed4438d5fb"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(sha256OfFile(path(c.name)), c.digest) << c.name;
}

TEST_F(RealPrograms, SignedByAMakerWhoseCertificateHasExpiredSinceAreValid)
{
    EXPECT_EQ(facts(path("node-18.19.1-arm64")), nodeFacts) << "SHA-256 alone";
    EXPECT_EQ(facts(path("node-12.22.9-x64")), nodeFacts) << "SHA-1 with SHA-256 as an alternate";
}

TEST_F(RealPrograms, SignedByALinkerHaveAnIdentifierOnly)
{
    EXPECT_EQ(facts(path("esbuild-0.21.5-arm64")),
        "basic 2, strict 2, a.out, none, platform 0, Self-Signed Certificate");
}

TEST_F(RealPrograms, SignedInTheirArm64SliceOnlyAnswerForThat)
{
    EXPECT_EQ(facts(path("fsevents-2.3.3-universal")),
        "basic 2, strict 2, fsevents.node, none, platform 0, Self-Signed Certificate");
}

TEST_F(RealPrograms, ThatNobodySignedAreUnsigned)
{
    EXPECT_EQ(facts(path("esbuild-0.21.5-x64")),
        "basic 1, strict 1, none, none, platform 0, Self-Signed Certificate");
}

TEST_F(RealPrograms, ThatWereChangedAreNotValid)
{
    const Bytes sound = test::bytesOf(test::TemporaryFolder::contents(path("node-12.22.9-x64")));
    // The offset of the signature, and in it of the signer's blob, which begins with the certificates.
    constexpr std::size_t signature = 46862896;
    constexpr std::size_t signerEnd = signature + 605400;
    ASSERT_EQ(ByteView(sound).u32(signature), 0xfade0cc0U);
    const struct {
        const char* why;
        std::size_t offset;
        const char* facts;
    } cases[] = {
        {"a byte of the code", 20'000'000, "basic 2, strict 3, node, HX7739G8FX, platform 0, Developer ID"},
        {"the first CodeDirectory", signature + 2000,
            "basic 3, strict 3, node, none, platform 0, Self-Signed"},
        {"the alternate CodeDirectory", signature + 300'000,
            "basic 3, strict 3, node, none, platform 0, Self-Signed"},
        {"the time stamp", signerEnd - 100, "basic 6, strict 6, node, none, platform 0, Self-Signed"},
    };
    const test::TemporaryFolder folder;
    for (const auto& c : cases) {
        Bytes program = sound;
        program[c.offset] ^= 1U;
        EXPECT_EQ(facts(folder.write("program", program)).rfind(c.facts, 0), 0U)
            << c.why << ": " << facts(folder.path("program"));
    }
    Bytes program = sound;
    program.push_back(0);
    EXPECT_EQ(facts(folder.write("program", program)).substr(0, 17), "basic 2, strict 6");
}

} // namespace quorvane::codesign
