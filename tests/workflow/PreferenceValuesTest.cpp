#include "workflow/PreferenceValues.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quorvane::workflow {

namespace {

platform::PropertyList settingsWith(const std::string& keys)
{
    auto list = platform::PropertyList::parse("<plist version=\"1.0\"><dict>" + keys + "</dict></plist>");
    EXPECT_TRUE(list) << keys;
    return list ? std::move(*list) : platform::PropertyList();
}

platform::PropertyList settingsWith(const std::string& key, const std::string& value)
{
    return settingsWith("<key>" + key + "</key>" + value);
}

struct Member {
    const char* key;
    bool PreferenceValues::*value;
};

const std::vector<Member> booleans = {
    {"access.user.restrict", &PreferenceValues::restrictRules},
    {"filter.exec.allow.signed", &PreferenceValues::allowSignedExecution},
};

const std::vector<Member> onUnless2 = {
    {"policy.global.user", &PreferenceValues::whitelistPreloaded},
    {"policy.global.webcam", &PreferenceValues::monitorWebcam},
    {"policy.global.startup", &PreferenceValues::monitorStartup},
    {"policy.global.exec", &PreferenceValues::monitorExecution},
    {"policy.global.attach", &PreferenceValues::monitorAttach},
    {"ui.prompts.while_locked", &PreferenceValues::promptsLocked},
};

const std::vector<Member> offUnless1 = {
    {"ui.prompts.oob", &PreferenceValues::requireTouchBar},
    {"policy.global.paranoid", &PreferenceValues::strictSystemRules},
    {"ui.prompts.remote", &PreferenceValues::allowRemoteAdministration},
    {"ui.prompts.authenticate", &PreferenceValues::requireAuthentication},
};

std::string writtenAs(const PreferenceValues& values)
{
    platform::PropertyList settings;
    values.writeTo(settings);
    return settings.description();
}

} // namespace

TEST(PreferenceValues, WithoutAPropertyListAreTheDefaults)
{
    const PreferenceValues values = PreferenceValues::shownFor(platform::PropertyList(), false);

    EXPECT_EQ(values, PreferenceValues());
    EXPECT_EQ(values.levelOfDetail, 0);
    for (const Member& member : onUnless2)
        EXPECT_TRUE(values.*member.value) << member.key;
    for (const Member& member : offUnless1)
        EXPECT_FALSE(values.*member.value) << member.key;
    for (const Member& member : booleans)
        EXPECT_FALSE(values.*member.value) << member.key;
}

TEST(PreferenceValues, ThreeStatesThatAreOnUnless2)
{
    for (const Member& member : onUnless2) {
        for (const char* on : {"<integer>0</integer>", "<integer>1</integer>", "<integer>3</integer>",
                 "<integer>-2</integer>", "<true/>", "<false/>", "<string>off</string>", "<array/>"})
            EXPECT_TRUE(PreferenceValues::shownFor(settingsWith(member.key, on), false).*member.value)
                << member.key << on;
        EXPECT_FALSE(
            PreferenceValues::shownFor(settingsWith(member.key, "<integer>2</integer>"), false).*member.value)
            << member.key;
    }
}

TEST(PreferenceValues, ThreeStatesThatAreOffUnless1)
{
    for (const Member& member : offUnless1) {
        for (const char* off : {"<integer>0</integer>", "<integer>2</integer>", "<integer>3</integer>",
                 "<integer>-1</integer>", "<false/>", "<string>on</string>", "<dict/>"})
            EXPECT_FALSE(PreferenceValues::shownFor(settingsWith(member.key, off), false).*member.value)
                << member.key << off;
        EXPECT_TRUE(
            PreferenceValues::shownFor(settingsWith(member.key, "<integer>1</integer>"), false).*member.value)
            << member.key;
    }
}

TEST(PreferenceValues, BooleansAreOnOnlyWhenTrue)
{
    for (const Member& member : booleans) {
        EXPECT_TRUE(PreferenceValues::shownFor(settingsWith(member.key, "<true/>"), false).*member.value);
        EXPECT_TRUE(PreferenceValues::shownFor(settingsWith(member.key, "<integer>1</integer>"), false)
            .*member.value);
        EXPECT_FALSE(PreferenceValues::shownFor(settingsWith(member.key, "<false/>"), false).*member.value);
        EXPECT_FALSE(PreferenceValues::shownFor(settingsWith(member.key, "<integer>0</integer>"), false)
            .*member.value);
    }
}

TEST(PreferenceValues, WhetherUsersMayCreateRulesIsTheFoldersPermissionAndNotTheKey)
{
    for (const char* key : {"<true/>", "<false/>"}) {
        const platform::PropertyList settings = settingsWith("access.user.create", key);
        EXPECT_TRUE(PreferenceValues::shownFor(settings, true).createRules) << key;
        EXPECT_FALSE(PreferenceValues::shownFor(settings, false).createRules) << key;
    }
}

TEST(PreferenceValues, LevelOfDetailIsTheIntegerOfItsKey)
{
    EXPECT_EQ(PreferenceValues::shownFor(settingsWith("access.user.detail", "<integer>2</integer>"), false)
                  .levelOfDetail,
        2);
    EXPECT_EQ(PreferenceValues::shownFor(settingsWith("access.user.detail", "<integer>-9</integer>"), false)
                  .levelOfDetail,
        -9);
    EXPECT_EQ(
        PreferenceValues::shownFor(settingsWith("access.user.detail", "<array/>"), false).levelOfDetail, 0);
}

TEST(PreferenceValues, WritesAllFourteenKeysInTheirOrder)
{
    EXPECT_EQ(writtenAs(PreferenceValues()),
        R"({"access.user.detail" = 0; "access.user.restrict" = 0; "access.user.create" = 0; )"
        R"("filter.exec.allow.signed" = 0; "policy.global.user" = 1; "policy.global.webcam" = 1; )"
        R"("policy.global.startup" = 1; "policy.global.exec" = 1; "policy.global.attach" = 1; )"
        R"("ui.prompts.while_locked" = 1; "ui.prompts.oob" = 2; "policy.global.paranoid" = 2; )"
        R"("ui.prompts.remote" = 2; "ui.prompts.authenticate" = 2})");
}

TEST(PreferenceValues, WritesEachSwitchUnderItsOwnKey)
{
    std::vector<Member> tristates = onUnless2;
    tristates.insert(tristates.end(), offUnless1.begin(), offUnless1.end());
    for (const Member& member : tristates) {
        for (const bool on : {true, false}) {
            PreferenceValues values;
            values.*member.value = on;
            platform::PropertyList settings;
            values.writeTo(settings);
            EXPECT_EQ(settings.integerForKey(member.key), on ? 1 : 2) << member.key;
            EXPECT_EQ(PreferenceValues::shownFor(settings, false), values) << member.key;
        }
    }
    for (const Member& member : booleans) {
        PreferenceValues values;
        values.*member.value = true;
        platform::PropertyList settings;
        values.writeTo(settings);
        EXPECT_EQ(PreferenceValues::shownFor(settings, false), values) << member.key;
    }
}

TEST(PreferenceValues, WritesBooleansAsBooleansAndTheRestAsIntegers)
{
    PreferenceValues values;
    values.restrictRules = true;
    values.createRules = true;
    values.levelOfDetail = 1;
    platform::PropertyList settings;
    values.writeTo(settings);

    const std::string xml = settings.fileBytes().value();
    for (const char* boolean : {"<key>access.user.restrict</key>\n\t<true/>",
             "<key>access.user.create</key>\n\t<true/>", "<key>filter.exec.allow.signed</key>\n\t<false/>",
             "<key>access.user.detail</key>\n\t<integer>1</integer>",
             "<key>policy.global.webcam</key>\n\t<integer>1</integer>",
             "<key>ui.prompts.oob</key>\n\t<integer>2</integer>"})
        EXPECT_NE(xml.find(boolean), std::string::npos) << boolean << " in " << xml;
}

TEST(PreferenceValues, ZeroInAThreeStateKeyIsShownOnAndWrittenAs1)
{
    platform::PropertyList settings = settingsWith("policy.global.webcam", "<integer>0</integer>");
    const PreferenceValues values = PreferenceValues::shownFor(settings, false);
    EXPECT_TRUE(values.monitorWebcam);

    values.writeTo(settings);
    EXPECT_EQ(settings.integerForKey("policy.global.webcam"), 1);
}

TEST(PreferenceValues, LeavesOtherKeysAlone)
{
    platform::PropertyList settings
        = settingsWith("<key>security.hashing.enforce</key><integer>-1</integer>"
                       "<key>other</key><array><date>2020-01-01T00:00:00Z</date></array>");
    PreferenceValues().writeTo(settings);
    EXPECT_EQ(settings.description().substr(0, 62),
        R"({"security.hashing.enforce" = -1; "other" = (599529600); "acce)");
}

} // namespace quorvane::workflow
