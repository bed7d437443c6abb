#include "rules/ApplicationIdentity.h"

#include "rules/PolicyRule.h"
#include "rules/WatchRule.h"

#include <gtest/gtest.h>

namespace quorvane::rules {

namespace {

constexpr const char* mail = "/Applications/Mail.app/Contents/MacOS/Mail";

struct Pieces {
    const char* process;
    const char* name;
    const char* path;
    std::optional<std::string> parentPath;
    std::optional<std::string> parentName;
    const char* bundle;
};

const Pieces knownProcesses[] = {
    {mail, "Mail", mail, {}, {}, "/Applications/Mail.app"},
    {"any", "Any Process", "any", {}, {}, "any"},
    {"/bin/sh via /usr/sbin/cron", "sh", "/bin/sh", "/usr/sbin/cron", "cron", "/bin/sh"},
    {"/bin/sh via any", "sh", "/bin/sh", "any", "any", "/bin/sh"},
    {"any via /usr/bin/login", "Any Process", "any", "/usr/bin/login", "login", "any"},
    {"any via any", "Any Process", "any", "any", "any", "any"},
    {"any via login", "Any Process via login", "any via login", {}, {}, "any via login"},
    {"any via a/b", "Any Process via b", "any via a/b", {}, {}, "any via a/b"},
    {"any ancestor /usr/bin/ssh", "Any Process with ancestor ssh", "any ancestor /usr/bin/ssh", {}, {},
        "any ancestor /usr/bin/ssh"},
    // The first " via /" splits the string, whatever follows.
    {"/bin/sh via /a via any", "sh", "/bin/sh", "/a via any", "a via any", "/bin/sh"},
    {"/bin/sh via /a via /b", "sh", "/bin/sh", "/a via /b", "b", "/bin/sh"},
    // A special form may be a head.
    {"any ancestor /usr/bin/ssh via /b", "Any Process with ancestor ssh", "any ancestor /usr/bin/ssh", "/b",
        "b", "any ancestor /usr/bin/ssh"},
    {"any via login via /b", "Any Process via login", "any via login", "/b", "b", "any via login"},
    // The outermost bundle, of the head only.
    {"/A.app/Contents/Helpers/B.app/Contents/MacOS/B", "B", "/A.app/Contents/Helpers/B.app/Contents/MacOS/B",
        {}, {}, "/A.app"},
    {"/bin/sh via /A.app/Contents/MacOS/A", "sh", "/bin/sh", "/A.app/Contents/MacOS/A", "A", "/bin/sh"},
    {"/usr/bin/ssh", "ssh", "/usr/bin/ssh", {}, {}, "/usr/bin/ssh"},
    {"/A.app", "A.app", "/A.app", {}, {}, "/A.app"},
    {"/A.application/A", "A", "/A.application/A", {}, {}, "/A.application/A"},
    // Text from " (-" on is cut off the path only.
    {"/usr/bin/tool (-x) via /bin/sh", "tool (-x)", "/usr/bin/tool", "/bin/sh", "sh", "/usr/bin/tool (-x)"},
    {"/usr/bin/tool (-x) (-y)", "tool (-x) (-y)", "/usr/bin/tool", {}, {}, "/usr/bin/tool (-x) (-y)"},
    {"/usr/bin/tool (x)", "tool (x)", "/usr/bin/tool (x)", {}, {}, "/usr/bin/tool (x)"},
    // Near misses of the words.
    {"/bin/sh via anyone", "sh via anyone", "/bin/sh via anyone", {}, {}, "/bin/sh via anyone"},
    {"/bin/sh via any ", "sh via any ", "/bin/sh via any ", {}, {}, "/bin/sh via any "},
    {"/bin/sh  via /a", "sh ", "/bin/sh ", "/a", "a", "/bin/sh "},
    {"Any", "Any", "Any", {}, {}, "Any"},
    {"ANY ancestor /a", "a", "ANY ancestor /a", {}, {}, "ANY ancestor /a"},
    {" via any", "", "", "any", "any", ""},
    {" via /a", "", "", "/a", "a", ""},
    {"/bin/sh via /", "sh", "/bin/sh", "/", "/", "/bin/sh"},
    {"/usr/bin/", "bin", "/usr/bin/", {}, {}, "/usr/bin/"},
    {"/", "/", "/", {}, {}, "/"},
    {"", "", "", {}, {}, ""},
};

} // namespace

TEST(ApplicationIdentity, TakesAProcessStringApart)
{
    for (const Pieces& c : knownProcesses) {
        EXPECT_EQ(applicationNameForProcess(c.process), c.name) << c.process;
        EXPECT_EQ(applicationPathForProcess(c.process), c.path) << c.process;
        EXPECT_EQ(applicationParentPathForProcess(c.process), c.parentPath) << c.process;
        EXPECT_EQ(applicationParentNameForProcess(c.process), c.parentName) << c.process;
        EXPECT_EQ(applicationBundlePathForPath(c.process), c.bundle) << c.process;
    }
}

TEST(ApplicationIdentity, GroupKeyNamesTheApplicationFirst)
{
    const struct {
        const char* process;
        const char* constraint;
        const char* key;
    } cases[] = {
        {mail, "", "Mail:/Applications/Mail.app/Contents/MacOS/Mail:(null):"},
        {mail, "ABCDE12345", "Mail:/Applications/Mail.app/Contents/MacOS/Mail:(null):ABCDE12345"},
        {"any", "", "Any Process:Any Process:(null):"},
        {"any", "T", "Any Process:Any Process:(null):T"},
        {"/bin/sh via /usr/sbin/cron", "", "sh:/bin/sh:/usr/sbin/cron:"},
        {"/bin/sh via any", "", "sh:/bin/sh:any:"},
        {"any via /usr/bin/login", "T", "Any Process:Any Process:/usr/bin/login:T"},
        {"any via any", "", "Any Process:Any Process:any:"},
        {"any via a/login", "T", "Any Process via a/login"},
        {"any via login via /b", "T", "Any Process via login"},
        {"any ancestor /usr/bin/ssh", "", "Any Process with ancestor /usr/bin/ssh"},
        {"any ancestor /usr/bin/ssh via /b", "T", "Any Process with ancestor /usr/bin/ssh"},
        {"/usr/bin/tool (-x)", "", "tool (-x):/usr/bin/tool (-x):(null):"},
        {"/bin/sh via /a via any", "", "sh:/bin/sh:/a via any:"},
        {"", "", "::(null):"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(applicationGroupIdentityForProcess(c.process, c.constraint), c.key) << c.process;
}

TEST(ApplicationIdentity, ForAncestorsTheKeyIgnoresTheConstraint)
{
    const NullableText process("any ancestor /usr/bin/ssh");

    EXPECT_EQ(applicationGroupIdentityForProcess(process, "ONE"),
        applicationGroupIdentityForProcess(process, "OTHER"));
}

TEST(ApplicationIdentity, NullPiecesOfAGroupKeyAreWrittenAsWords)
{
    EXPECT_EQ(applicationGroupIdentityForProcess({}, ""), "(null):(null):(null):");
    EXPECT_EQ(applicationGroupIdentityForProcess("/bin/ls", {}), "ls:/bin/ls:(null):(null)");
}

TEST(ApplicationIdentity, OfARuleIsThatOfItsProcess)
{
    const PolicyRule policy({.path = "/a", .processName = "/A.app/a (-x) via /b/c", .constraint = "T"});
    const WatchRule watch({.path = "/a", .processName = "/A.app/a (-x) via /b/c"});

    EXPECT_EQ(applicationNameForRule(policy), "a (-x)");
    EXPECT_EQ(applicationGroupIdentityForRule(policy), "a (-x):/A.app/a (-x):/b/c:T");
    EXPECT_EQ(applicationPathForRule(policy), "/A.app/a");
    EXPECT_EQ(applicationParentPathForRule(policy), "/b/c");
    EXPECT_EQ(applicationParentNameForRule(policy), "c");
    EXPECT_EQ(applicationBundlePathForRule(policy), "/A.app");
    EXPECT_EQ(applicationNameForRule(watch), "a (-x)");
    EXPECT_EQ(applicationGroupIdentityForRule(watch), "a (-x):/A.app/a (-x):/b/c:")
        << "a watch rule's key has an empty fourth field";
}

} // namespace quorvane::rules
