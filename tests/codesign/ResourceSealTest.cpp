#include "codesign/ResourceSeal.h"
#include "codesign/CodeDirectories.h"
#include "codesign/SignatureContainer.h"
#include "tests/support/Answers.h"
#include "tests/support/ByteWriter.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <tuple>

namespace quorvane::codesign {

namespace {

constexpr std::uint32_t withResources = 0x2; // all checks except those of pages
constexpr std::uint32_t withoutResources = 0x6;

const char* const usualRules
    = "<key>^.*</key><true/>"
      "<key>^Resources/.*\\.lproj/</key><dict><key>optional</key><true/><key>weight</key>"
      "<real>1000</real></dict>"
      "<key>^(Frameworks|PlugIns)/</key><dict><key>nested</key><true/><key>weight</key>"
      "<real>10</real></dict>"
      "<key>^(.*/)?\\.DS_Store$</key><dict><key>omit</key><true/><key>weight</key>"
      "<real>2000</real></dict>"
      "<key>^Info\\.plist$</key><dict><key>omit</key><true/><key>weight</key>"
      "<real>20</real></dict>";

std::string hashed(HashAlgorithm algorithm, const std::string& contents)
{
    return "<data>" + test::base64(hashOf(algorithm, ByteView(contents.data(), contents.size())).view())
        + "</data>";
}

std::string sealedFile(const std::string& path, const std::string& contents, bool optional = false)
{
    return "<key>" + path + "</key><dict><key>hash2</key>" + hashed(HashAlgorithm::sha256, contents)
        + (optional ? "<key>optional</key><true/>" : "") + "</dict>";
}

std::string sealedLink(const std::string& path, const std::string& target)
{
    return "<key>" + path + "</key><dict><key>symlink</key><string>" + target + "</string></dict>";
}

std::string seal(const std::string& files)
{
    return "<plist><dict><key>files2</key><dict>" + files + "</dict><key>rules2</key><dict>" + usualRules
        + "</dict></dict></plist>";
}

// An application whose resources are sealed as given.
class Application {
public:
    explicit Application(const std::string& sealText, const std::string& name = "X.app")
        : m_name(name)
    {
        write("Info.plist", "<plist><dict><key>CFBundleExecutable</key><string>main</string></dict></plist>");
        write("_CodeSignature/CodeResources", sealText);
        test::ProgramPlan plan;
        plan.signature->infoPlist = test::bytesOf(test::TemporaryFolder::contents(path("Info.plist")));
        plan.signature->resourceSeal = test::bytesOf(sealText);
        m_folder.write(m_name + "/Contents/MacOS/main", makeProgram(plan));
    }

    void write(const std::string& relative, const std::string& contents) const
    {
        m_folder.write(m_name + "/Contents/" + relative, contents);
    }
    std::string path(const std::string& relative) const
    {
        return m_folder.path(m_name + "/Contents/" + relative);
    }
    std::int32_t state(std::uint32_t flags = withResources) const
    {
        return test::stateAt(m_folder.path(m_name), flags);
    }
    const test::TemporaryFolder& folder() const { return m_folder; }

private:
    test::TemporaryFolder m_folder;
    std::string m_name;
};

// An application with one of each kind of resource, all valid.
class FullApplication : public Application {
public:
    FullApplication()
        : Application(seal(sealedFile("Resources/a.txt", "a") + sealedFile("Resources/de.lproj/b", "b", true)
            + sealedLink("Resources/link", "a.txt")))
    {
        write("Resources/a.txt", "a");
        write("Resources/de.lproj/b", "b");
        write("Resources/.DS_Store", "not sealed");
        std::filesystem::create_symlink("a.txt", path("Resources/link"));
    }
};

} // namespace

TEST(ResourceSeal, HoldsWhenEverythingIsAsSealed)
{
    const FullApplication application;
    EXPECT_EQ(application.state(), 2);
    EXPECT_EQ(application.state(0), 2) << "with the pages";
    EXPECT_EQ(application.state(0x10), 2) << "with everything";
}

TEST(ResourceSeal, IsBrokenByEveryChange)
{
    const struct {
        const char* why;
        std::function<void(const FullApplication&)> change;
        std::int32_t state;
    } cases[] = {
        {"a changed file", [](const auto& app) { app.write("Resources/a.txt", "A"); }, 6},
        {"a removed file", [](const auto& app) { std::filesystem::remove(app.path("Resources/a.txt")); }, 6},
        {"an added file", [](const auto& app) { app.write("Resources/new", ""); }, 6},
        {"an added file deep below", [](const auto& app) { app.write("a/b/c/new", ""); }, 6},
        {"an added program", [](const auto& app) { app.write("MacOS/other", ""); }, 6},
        {"an added optional file", [](const auto& app) { app.write("Resources/de.lproj/new", ""); }, 6},
        {"a changed optional file", [](const auto& app) { app.write("Resources/de.lproj/b", "B"); }, 6},
        {"a removed optional file",
            [](const auto& app) { std::filesystem::remove(app.path("Resources/de.lproj/b")); }, 2},
        {"an added file that is left out", [](const auto& app) { app.write("Resources/x/.DS_Store", "x"); },
            2},
        {"an added empty folder",
            [](const auto& app) { std::filesystem::create_directory(app.path("empty")); }, 2},
        {"another target of a link",
            [](const auto& app) {
                std::filesystem::remove(app.path("Resources/link"));
                std::filesystem::create_symlink("b.txt", app.path("Resources/link"));
            },
            6},
        {"a link in place of a file",
            [](const auto& app) {
                std::filesystem::rename(app.path("Resources/a.txt"), app.folder().path("elsewhere"));
                std::filesystem::create_symlink(app.folder().path("elsewhere"), app.path("Resources/a.txt"));
            },
            6},
        {"a folder in place of a file",
            [](const auto& app) {
                std::filesystem::remove(app.path("Resources/a.txt"));
                std::filesystem::create_directory(app.path("Resources/a.txt"));
            },
            6},
        {"an added link to the folder above",
            [](const auto& app) {
                std::filesystem::create_directory_symlink("..", app.path("Resources/up"));
            },
            6},
        {"a changed seal", [](const auto& app) { app.write("_CodeSignature/CodeResources", seal("")); }, 6},
        {"no seal",
            [](const auto& app) { std::filesystem::remove(app.path("_CodeSignature/CodeResources")); }, 6},
    };
    for (const auto& c : cases) {
        const FullApplication application;
        c.change(application);
        EXPECT_EQ(application.state(), c.state) << c.why;
        EXPECT_EQ(application.state(withoutResources), 2) << c.why << ", not asked for";
    }
}

TEST(ResourceSeal, NeverLeavesTheBundle)
{
    for (const char* path :
        {"../../outside", "../Contents/Resources/a", "/etc/passwd", "Resources/../Resources/a"}) {
        const Application application(seal(sealedFile(path, "outside")));
        application.folder().write("outside", std::string_view("outside"));
        EXPECT_EQ(application.state(), 6) << path;
    }
}

TEST(ResourceSeal, ThatCannotBeReadCannotBeTold)
{
    std::string deep = "<plist>";
    for (int i = 0; i < 100000; ++i)
        deep += "<array>";
    for (const std::string& text :
        {std::string(), std::string("rubbish"), deep, std::string("<plist><dict/></plist>"),
            std::string("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><dict/></plist>")})
        EXPECT_EQ(Application(text).state(), 6) << text.substr(0, 40);
}

TEST(ResourceSeal, OfAMillionFilesIsRefusedInTime)
{
    std::string files;
    for (int i = 0; i < 1'000'000; ++i)
        files += "<key>" + std::to_string(i) + "</key><data/>";
    EXPECT_EQ(Application(seal(files)).state(), 6);
}

TEST(ResourceSeal, InItsFirstFormIsReadToo)
{
    const std::string text = "<plist><dict><key>files</key><dict><key>Resources/a</key>"
        + hashed(HashAlgorithm::sha1, "a")
        + "</dict><key>rules</key><dict><key>^Resources/</key><true/></dict></dict></plist>";
    const Application application(text);
    application.write("Resources/a", "a");
    application.write("elsewhere", "no rule covers this");
    EXPECT_EQ(application.state(), 2);
    application.write("Resources/a", "b");
    EXPECT_EQ(application.state(), 6);
    std::filesystem::remove(application.path("Resources/a"));
    EXPECT_EQ(application.state(), 6) << "none of its files is optional";
}

TEST(ResourceSeal, InBothFormsCountsByTheNewer)
{
    const auto bothForms = [](const std::string& older, const std::string& newer) {
        return "<plist><dict><key>files</key><dict><key>Resources/a</key>"
            + hashed(HashAlgorithm::sha1, older)
            + "</dict><key>files2</key><dict><key>Resources/a</key><dict><key>hash</key>"
            + hashed(HashAlgorithm::sha1, older) + "<key>hash2</key>" + hashed(HashAlgorithm::sha256, newer)
            + "</dict></dict><key>rules</key><dict/><key>rules2</key><dict><key>^.*</key><true/>"
              "<key>^Info\\.plist$</key><dict><key>omit</key><true/><key>weight</key><real>20</real></dict>"
              "</dict></dict></plist>";
    };
    for (const auto& [older, newer, state] : {std::tuple("a", "a", 2), {"b", "a", 2}, {"a", "b", 6}}) {
        const Application application(bothForms(older, newer));
        application.write("Resources/a", "a");
        EXPECT_EQ(application.state(), state) << older << newer;
        application.write("Resources/unsealed", "which the older rules would not mind");
        EXPECT_EQ(application.state(), 6);
    }
}

TEST(ResourceSeal, MayHoldAFileByItsOlderHashAlone)
{
    const Application application(
        seal("<key>a</key><dict><key>hash</key>" + hashed(HashAlgorithm::sha1, "a") + "</dict>"));
    application.write("a", "a");
    EXPECT_EQ(application.state(), 2);
    application.write("a", "b");
    EXPECT_EQ(application.state(), 6);
}

TEST(ResourceSeal, MayHoldALinkThatNeedNotBeThere)
{
    const Application application(
        seal("<key>a</key><dict><key>symlink</key><string>x</string><key>optional</key><true/></dict>"));
    EXPECT_EQ(application.state(), 2);
    std::filesystem::create_symlink("x", application.path("a"));
    EXPECT_EQ(application.state(), 2);
    application.write("x", "not sealed");
    EXPECT_EQ(application.state(), 6);
}

TEST(ResourceSeal, ThatHoldsAFileByNothingIsRefused)
{
    for (const char* nothing :
        {"<dict/>", "<integer>1</integer>", "<dict><key>hash2</key><string>x</string></dict>"})
        EXPECT_EQ(Application(seal(std::string("<key>a</key>") + nothing)).state(), 6) << nothing;
}

TEST(ResourceSeal, PassesOverWhatBelongsToSignaturesAtTheTopAlone)
{
    const Application application(seal(""));
    application.write("_MASReceipt", "a receipt");
    std::filesystem::create_symlink("_CodeSignature/CodeResources", application.path("CodeResources"));
    EXPECT_EQ(application.state(), 2);
    for (const char* below : {"a/_MASReceipt", "a/CodeResources", "a/_CodeSignature", "a/main"}) {
        application.write(below, "");
        EXPECT_EQ(application.state(), 6) << below;
        std::filesystem::remove(application.path(below));
    }
}

TEST(ResourceSeal, EndsWithItsBudget)
{
    const test::TemporaryFolder folder;
    folder.write("main", std::string_view("the program"));
    folder.write("a", std::string_view("12345"));
    folder.write("b/c", std::string_view("678"));
    folder.write("d", std::string_view("code"));
    folder.write("Info.plist", std::string_view("left out by a rule"));
    const Bytes text = test::bytesOf(seal(sealedFile("a", "12345") + sealedFile("b/c", "678")
        + "<key>d</key><dict><key>cdhash</key><data>AAAA</data></dict>"));
    const BundleLayout bundle{{}, folder.path("main"), folder.path("Info.plist"), "", folder.path()};
    const auto matches = [&](SealBudget budget) {
        return resourcesMatchSeal(
            bundle, text, [](const auto&, ByteView) { return true; }, budget);
    };
    SealBudget exact;
    exact.entries = 6; // the folder is one of them
    exact.bytes = 8;
    exact.nestedCodes = 1;
    EXPECT_TRUE(matches(exact));
    SealBudget budget = exact;
    budget.entries = 5;
    EXPECT_FALSE(matches(budget));
    budget = exact;
    budget.bytes = 7;
    EXPECT_FALSE(matches(budget));
    budget = exact;
    budget.nestedCodes = 0;
    EXPECT_FALSE(matches(budget));
    budget = exact;
    budget.comparing = std::chrono::nanoseconds(1);
    EXPECT_FALSE(matches(budget));
}

TEST(ResourceSeal, SpendsItsBudgetOnce)
{
    const test::TemporaryFolder folder;
    folder.write("a", std::string_view("12345"));
    folder.write("code", std::string_view("code"));
    const Bytes text = test::bytesOf(
        seal(sealedFile("a", "12345") + "<key>code</key><dict><key>cdhash</key><data>AAAA</data></dict>"));
    const BundleLayout bundle{{}, folder.path("main"), folder.path("Info.plist"), "", folder.path()};
    SealBudget budget;
    budget.entries = 10;
    budget.bytes = 10;
    budget.nestedCodes = 10;
    EXPECT_TRUE(resourcesMatchSeal(
        bundle, text, [](const auto&, ByteView) { return true; }, budget));
    EXPECT_EQ(budget.entries, 8U);
    EXPECT_EQ(budget.bytes, 5U);
    EXPECT_EQ(budget.nestedCodes, 9U);
}

TEST(ResourceSeal, MissingInASignedBundleFailsTheResourceCheck)
{
    const test::TemporaryFolder folder;
    folder.write("X.app/Contents/MacOS/X", test::makeProgram());
    EXPECT_EQ(test::stateAt(folder.path("X.app"), withResources), 6);
    EXPECT_EQ(test::stateAt(folder.path("X.app"), withoutResources), 2);
    EXPECT_EQ(test::stateAt(folder.write("bare", test::makeProgram()), withResources), 2)
        << "a bare program has no resources";
}

TEST(ResourceSeal, OfAProgramThatHasLeftItsBundleIsBroken)
{
    test::SignaturePlan plan;
    plan.resourceSeal = test::bytesOf(seal(""));
    const test::TemporaryFolder folder;
    const std::string path = folder.write("program", programOf(plan));
    EXPECT_EQ(test::stateAt(path, withResources), 6);
    EXPECT_EQ(test::stateAt(path, withoutResources), 2);
}

TEST(ResourceSeal, HoldsNestedCodeByItsHash)
{
    const Bytes helper = test::makeProgram();
    const auto container = SignatureContainer::parse(Bytes(helper.begin() + test::codeLength, helper.end()));
    const HashValue hash = loadCodeDirectories(*container).hashes.front();
    const std::string sealed = seal("<key>Frameworks/helper</key><dict><key>cdhash</key><data>"
        + test::base64(ByteView(hash.bytes.data(), 20))
        + "</data><key>requirement</key><string>identifier x</string></dict>");

    const Application application(sealed);
    application.write("Frameworks/helper", std::string(ByteView(helper).text()));
    EXPECT_EQ(application.state(), 2);
    EXPECT_EQ(application.state(0), 2);

    Bytes changed = helper;
    changed[5000] ^= 1U;
    application.write("Frameworks/helper", std::string(ByteView(changed).text()));
    EXPECT_EQ(application.state(0), 6) << "its pages are wrong";

    test::ProgramPlan other;
    other.signature->directories.front().identifier = "another";
    application.write("Frameworks/helper", std::string(ByteView(makeProgram(other)).text()));
    EXPECT_EQ(application.state(), 6) << "valid, but another program";
    std::filesystem::remove(application.path("Frameworks/helper"));
    EXPECT_EQ(application.state(), 6) << "missing";
    const std::string elsewhere = application.folder().write("helper", std::string(ByteView(helper).text()));
    std::filesystem::create_symlink(elsewhere, application.path("Frameworks/helper"));
    EXPECT_EQ(application.state(), 6) << "a link to it";
}

} // namespace quorvane::codesign
