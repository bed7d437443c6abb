#include "platform/Locations.h"

#include "platform/Account.h"
#include "tests/support/EnvironmentVariable.h"

#include <gtest/gtest.h>

namespace quorvane {

TEST(Locations, WithoutRootAreTheProductsPlaces)
{
    const Locations locations("", "ann");

    EXPECT_EQ(locations.sharedFolder(), "/Users/Shared/Quorvane/");
    EXPECT_EQ(locations.userRulesFile(), "/Users/Shared/Quorvane/ann.quorvane.rc");
    EXPECT_EQ(locations.failSafeFile(), "/Users/Shared/Quorvane/failsafe.rc");
    EXPECT_EQ(locations.preferencesFile(), "/Users/Shared/Quorvane/vantreal.Quorvane.preferences.plist");
    EXPECT_EQ(locations.systemFolder(), "/Library/Application Support/Quorvane/");
    EXPECT_EQ(locations.mainSystemRulesFile(), "/Library/Application Support/Quorvane/quorvane.rc");
    EXPECT_EQ(locations.paranoidSystemRulesFile(), "/Library/Application Support/Quorvane/paranoid.rc");
}

TEST(Locations, RootStandsInFrontOfEveryPlace)
{
    const struct {
        const char* why;
        const char* root;
    } cases[] = {
        {"as given", "/tmp/box"},
        {"a trailing slash is dropped", "/tmp/box/"},
        {"all trailing slashes are dropped", "/tmp/box///"},
    };
    for (const auto& c : cases) {
        const Locations locations(c.root, "ann");

        EXPECT_EQ(locations.userRulesFile(), "/tmp/box/Users/Shared/Quorvane/ann.quorvane.rc") << c.why;
        EXPECT_EQ(locations.failSafeFile(), "/tmp/box/Users/Shared/Quorvane/failsafe.rc") << c.why;
        EXPECT_EQ(locations.systemFolder(), "/tmp/box/Library/Application Support/Quorvane/") << c.why;
    }
}

TEST(Locations, OfMarkersExtrasAndGuide)
{
    const Locations locations("/box", "ann");

    EXPECT_EQ(locations.exchangeFileName(), "ann.quorv");
    EXPECT_EQ(locations.failSafeStrictMarker(), "/box/Users/Shared/Quorvane/failsafe.rc.strict");
    EXPECT_EQ(locations.learningModeMarker(), "/box/Users/Shared/Quorvane/learning_mode");
    EXPECT_EQ(locations.extrasFolder(), "/box/Users/Shared/Quorvane Extras/");
    EXPECT_EQ(locations.userGuideFile(), "/box/Library/Application Support/Quorvane/Quorvane User Guide.pdf");
}

TEST(Locations, RootOfTheFileSystemIsNoRoot)
{
    EXPECT_EQ(Locations("/", "ann").sharedFolder(), "/Users/Shared/Quorvane/");
}

TEST(Locations, FromEnvironmentTakesRootAndRealUser)
{
    const std::string rest = "/Users/Shared/Quorvane/" + loginName() + ".quorvane.rc";

    const EnvironmentVariable root("QUORVANE_ROOT", "/tmp/box");
    EXPECT_EQ(Locations::fromEnvironment().userRulesFile(), "/tmp/box" + rest);
    const EnvironmentVariable none("QUORVANE_ROOT", std::nullopt);
    EXPECT_EQ(Locations::fromEnvironment().userRulesFile(), rest);
}

} // namespace quorvane
