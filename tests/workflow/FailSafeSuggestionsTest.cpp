#include "workflow/FailSafeSuggestions.h"

#include "platform/FileBytes.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

class FailSafeSuggestions : public testing::Test {
protected:
    void put(const std::string& name) const { folder.write("Users/Shared/Quorvane/" + name, ""); }

    const test::TemporaryFolder folder;
    const platform::Locations locations{folder.path(), "ann"};
};

} // namespace

TEST_F(FailSafeSuggestions, AreDueWhenTheFileIsThereAndLearningModeIsOff)
{
    EXPECT_FALSE(areSuggestionsDue(locations)) << "no file";
    put("failsafe.rc");
    EXPECT_FALSE(checkSafeMode(locations));
    EXPECT_TRUE(areSuggestionsDue(locations));
    put("learning_mode");
    EXPECT_TRUE(checkSafeMode(locations));
    EXPECT_FALSE(areSuggestionsDue(locations)) << "learning mode leaves them alone";
}

TEST_F(FailSafeSuggestions, TheMarkerAloneIsNoReasonForAReview)
{
    put("failsafe.rc.strict");
    EXPECT_FALSE(areSuggestionsDue(locations));
}

TEST_F(FailSafeSuggestions, TheNoticeTellsDeniedAccessesFromNewSoftware)
{
    put("failsafe.rc");
    const auto newSoftware = suggestionsNotice(locations, locations.failSafeFile());
    ASSERT_TRUE(newSoftware);
    EXPECT_EQ(newSoftware->header, "New Rule Suggestions");
    EXPECT_EQ(newSoftware->message,
        "Quorvane detected new software attempting to run, and has created the following rule suggestions. "
        "Please review these rules, then click Import if you wish to add them.");

    put("failsafe.rc.strict");
    const auto denied = suggestionsNotice(locations, locations.failSafeFile());
    ASSERT_TRUE(denied);
    EXPECT_EQ(denied->header, "Unauthorized Access Attempts");
    EXPECT_EQ(denied->message,
        "Quorvane denied the following file access attempts, and has created the following rule suggestions. "
        "If you have recently added new software, you may need to import these rules to allow it to operate "
        "correctly. Please review these rules, then click Import if you wish to add them.");
}

TEST_F(FailSafeSuggestions, AnyOtherFileHasNoNotice)
{
    put("failsafe.rc");
    put("failsafe.rc.strict");
    EXPECT_FALSE(suggestionsNotice(locations, locations.extrasFolder() + "Tools.quorv"));
    EXPECT_FALSE(suggestionsNotice(locations, locations.sharedFolder() + "/failsafe.rc"));
    EXPECT_FALSE(suggestionsNotice(locations, locations.failSafeStrictMarker()));
}

TEST_F(FailSafeSuggestions, AreDiscardedWithTheirMarkerAndNothingElse)
{
    discardSuggestions(locations); // nothing exists: no failure
    put("failsafe.rc");
    put("failsafe.rc.strict");
    put("learning_mode");
    discardSuggestions(locations);
    EXPECT_FALSE(platform::isAnythingAt(locations.failSafeFile()));
    EXPECT_FALSE(platform::isAnythingAt(locations.failSafeStrictMarker()));
    EXPECT_TRUE(platform::isAnythingAt(locations.learningModeMarker()));
}

} // namespace quorvane::workflow
