#include "platform/Locations.h"

#include "platform/Account.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace quorvane::platform {

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
    const test::TemporaryFolder folder;
    const std::string link = folder.path("link");
    const std::string linkToLink = folder.path("link-to-link");
    std::filesystem::create_symlink("/", link);
    std::filesystem::create_symlink(link + "/usr/..", linkToLink);
    std::string upwards = folder.path("missing/..");
    for (int level = 0; level < 20; ++level)
        upwards += "/..";
    for (const std::string& root :
        {std::string("/"), std::string("//"), std::string("/."), std::string("/usr/.."),
            std::string("/usr/../"), std::string("/./usr/bin/../.."), std::string("/no/such/../.."),
            std::string("/proc/self/root"), upwards, link, link + "/", linkToLink}) {
        const Locations locations(root, "ann");
        EXPECT_EQ(locations.sharedFolder(), "/Users/Shared/Quorvane/") << root;
        EXPECT_FALSE(locations.areSandbox()) << root;
    }
}

TEST(Locations, RootThatIsAnyOtherFolderIsASandboxSpeltAsGiven)
{
    const test::TemporaryFolder folder;
    const std::string link = folder.path("link");
    const std::string circle = folder.path("circle");
    std::filesystem::create_symlink(folder.path(), link);
    std::filesystem::create_symlink(circle, circle);
    for (const std::string& root :
        {folder.path(), link, link + "/../x", circle, std::string("relative"), std::string("/no/such")}) {
        const Locations locations(root, "ann");
        EXPECT_EQ(locations.sharedFolder(), root + "/Users/Shared/Quorvane/");
        EXPECT_TRUE(locations.areSandbox()) << root;
    }
}

TEST(Locations, FromEnvironmentTakesRootAndRealUser)
{
    const std::string rest = "/Users/Shared/Quorvane/" + loginName() + ".quorvane.rc";

    const test::EnvironmentVariable root("QUORVANE_ROOT", "/tmp/box");
    EXPECT_EQ(Locations::fromEnvironment().userRulesFile(), "/tmp/box" + rest);
    const test::EnvironmentVariable none("QUORVANE_ROOT", std::nullopt);
    EXPECT_EQ(Locations::fromEnvironment().userRulesFile(), rest);
}

} // namespace quorvane::platform
