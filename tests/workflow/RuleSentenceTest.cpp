#include "workflow/RuleSentence.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace quorvane::workflow {

namespace {

rules::PolicyRuleFields allowing(std::string path, std::string process)
{
    return {.path = std::move(path), .processName = std::move(process), .operations = 1};
}

std::string sentenceOf(rules::PolicyRuleFields fields)
{
    return ruleSentence(makeRuleValue(std::move(fields)));
}

// For programs of all forms.
std::string sentenceFor(std::string process, std::int32_t policyClass = 0)
{
    rules::PolicyRuleFields fields = allowing("/etc/hosts", std::move(process));
    fields.policyType = 1;
    fields.policyClass = policyClass;
    return sentenceOf(std::move(fields));
}

// For paths of all types.
std::string sentenceAbout(std::string path, std::int32_t type)
{
    rules::PolicyRuleFields fields = allowing(std::move(path), "/bin/sh");
    fields.policyType = type;
    return sentenceOf(std::move(fields));
}

std::string sentenceWith(std::uint32_t operations, std::int32_t policyClass = 0)
{
    rules::PolicyRuleFields fields = allowing("any", "/bin/sh");
    fields.operations = operations;
    fields.policyClass = policyClass;
    return sentenceOf(std::move(fields));
}

} // namespace

TEST(RuleSentence, SaysWhatAnAllowRuleLetsAProgramDo)
{
    EXPECT_EQ(sentenceWith(1), "sh may read anything.");
    EXPECT_EQ(sentenceWith(3), "sh may read and write anything.");
    EXPECT_EQ(sentenceWith(31), "sh may read, write, create, mount and execute anything.");
}

TEST(RuleSentence, SaysWhatADenyRuleKeepsAProgramFrom)
{
    EXPECT_EQ(sentenceWith(7, 1), "sh may not read, write or create anything.");
    EXPECT_EQ(sentenceFor("any", 1), "No program may read /etc/hosts.");
    EXPECT_EQ(sentenceFor("any via /usr/bin/login", 1), "No program started by login may read /etc/hosts.");
}

TEST(RuleSentence, SaysWhatAWatchRuleReports)
{
    EXPECT_EQ(ruleSentence(makeRuleValue(rules::WatchRuleFields{
                  .path = "/Library/LaunchAgents/", .processName = "any", .operations = 6})),
        "It is reported when any program writes or creates anything in /Library/LaunchAgents/.");
}

TEST(RuleSentence, NamesTheProgramInEachOfItsForms)
{
    EXPECT_EQ(sentenceFor("/Applications/Mail.app/Contents/MacOS/Mail"), "Mail may read /etc/hosts.");
    EXPECT_EQ(sentenceFor("any"), "Any program may read /etc/hosts.");
    EXPECT_EQ(sentenceFor("/bin/sh via /usr/sbin/cron"), "sh started by cron may read /etc/hosts.");
    EXPECT_EQ(sentenceFor("/bin/sh via any"), "sh, whoever started it, may read /etc/hosts.");
    EXPECT_EQ(sentenceFor("any via /usr/bin/login"), "Any program started by login may read /etc/hosts.");
    EXPECT_EQ(sentenceFor("any via loginwindow"), "Any program started by loginwindow may read /etc/hosts.");
    EXPECT_EQ(
        sentenceFor("any ancestor /usr/bin/ssh"), "Any program that descends from ssh may read /etc/hosts.");
    EXPECT_EQ(sentenceFor(""), "A program without a name may read /etc/hosts.");
}

TEST(RuleSentence, SaysWhichPathsARuleIsAbout)
{
    EXPECT_EQ(sentenceAbout("/etc/hosts", 1), "sh may read /etc/hosts.");
    EXPECT_EQ(sentenceAbout("/Users/ann/", 0), "sh may read anything in /Users/ann/.");
    EXPECT_EQ(sentenceAbout("/usr/bin", 0), "sh may read anything whose path begins with /usr/bin.");
    EXPECT_EQ(sentenceAbout(".mp3", 2), "sh may read anything whose path ends with .mp3.");
    EXPECT_EQ(sentenceAbout("any", 2), "sh may read anything.");
    EXPECT_EQ(sentenceAbout("", 1), "sh may read anything.");
    EXPECT_EQ(sentenceOf({.processName = "/bin/sh", .operations = 1}), "sh may read no path.");
}

TEST(RuleSentence, SaysWhatAPathNamesThatIsNoOrdinaryFile)
{
    EXPECT_EQ(sentenceAbout(":NVRAM/", 0), "sh may read anything in :NVRAM/ (settings of the firmware).");
    EXPECT_EQ(sentenceAbout(":IOKIT/Audio", 1), "sh may read :IOKIT/Audio (devices).");
    EXPECT_EQ(
        sentenceAbout("/dev/audio", 0), "sh may read anything whose path begins with /dev/audio (devices).");
    EXPECT_EQ(sentenceAbout("~/Notes/", 0), "sh may read anything in ~/Notes/ (in the home folder).");
}

TEST(RuleSentence, SaysOfWordsWithoutMeaningThatTheyAreNotKnown)
{
    EXPECT_EQ(sentenceAbout("/etc/hosts", 4), "sh may read /etc/hosts (in a way that is not known).");
    EXPECT_EQ(
        sentenceFor("/bin/sh", 4), "The class of this rule is not known; it is about sh and /etc/hosts.");
    EXPECT_EQ(sentenceWith(0), "This rule names no operation; it is about sh and anything.");
    EXPECT_EQ(sentenceWith(32, 1), "This rule names no operation; it is about sh and anything.");
}

TEST(RuleSentence, TellsOfProgramBindingDateAndTagBesides)
{
    rules::PolicyRuleFields fields = allowing("any", "/bin/sh via /usr/sbin/cron");
    EXPECT_EQ(ruleDetails(makeRuleValue(fields)),
        "/bin/sh \u00b7 started by /usr/sbin/cron \u00b7 bound to nothing but its path");
    fields.processName = "any";
    fields.constraint = "APPLE_PF_BINARY";
    fields.created = 1700000000;
    fields.tag = "work";
    fields.system = true;
    EXPECT_EQ(ruleDetails(makeRuleValue(fields)),
        "bound to the operating system's own programs \u00b7 made 2023-11-14 22:13:20 UTC \u00b7 tag work "
        "\u00b7 "
        "a system rule");
    EXPECT_EQ(ruleDetails(makeRuleValue(rules::WatchRuleFields{
                  .path = "any", .processName = "any ancestor /usr/bin/ssh", .tag = "far"})),
        "/usr/bin/ssh \u00b7 tag far");
}

TEST(RuleSentence, TellsConstraintsApartByTheirLength)
{
    EXPECT_EQ(constraintWords(""), "bound to nothing but its path");
    EXPECT_EQ(constraintWords(std::string(40, 'a')), "bound to the file with SHA-1 " + std::string(40, 'a'));
    EXPECT_EQ(
        constraintWords(std::string(64, 'b')), "bound to the file with SHA-256 " + std::string(64, 'b'));
    EXPECT_EQ(constraintWords("K7Q2M9XW4T"), "bound to team K7Q2M9XW4T");
}

} // namespace quorvane::workflow
