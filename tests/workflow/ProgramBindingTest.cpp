#include "workflow/ProgramBinding.h"
#include "tests/support/FakeProgramFacts.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

TEST(DecidingProgram, IsTheParentOfAnyProcess)
{
    EXPECT_EQ(decidingProgram("/bin/a"), "/bin/a");
    EXPECT_EQ(decidingProgram("/bin/a (-x) via /bin/b"), "/bin/a");
    EXPECT_EQ(decidingProgram("any via /bin/b"), "/bin/b");
    EXPECT_EQ(decidingProgram("any"), "");
}

TEST(ProgramBinding, IsByTeamThenByMarkerThenByDigest)
{
    test::FakeProgramFacts facts;
    facts.existing = {"/team", "/platform", "/plain", "/closed", "/System/x"};
    facts.folders = {"/folder"};
    facts.teams["/team"] = "TEAM";
    facts.platformIdentifiers["/platform"] = 1;
    facts.sha256s["/plain"] = "digest";
    facts.unreadable = {"/closed"};
    const struct {
        const char* program;
        ProgramBinding::Program found;
        const char* constraint;
    } cases[]
        = {{"/team", ProgramBinding::seen, "TEAM"}, {"/platform", ProgramBinding::seen, "APPLE_PF_BINARY"},
            {"/plain", ProgramBinding::seen, "digest"}, {"/closed", ProgramBinding::unreadable, ""},
            {"/System/x", ProgramBinding::seen, ""}, {"/gone", ProgramBinding::gone, ""},
            {"/folder", ProgramBinding::gone, ""}, {"", ProgramBinding::gone, ""}};
    for (const auto& c : cases) {
        const ProgramBinding binding = bindingOf(c.program, facts);
        EXPECT_EQ(binding.program, c.found) << c.program;
        EXPECT_EQ(binding.constraint, c.constraint) << c.program;
    }
}

} // namespace quorvane::workflow
