#include "workflow/FileFindings.h"

#include "tests/support/TestRules.h"

#include <gtest/gtest.h>

namespace quorvane::workflow {

namespace {

// Each finding as "row:line kind path".
std::vector<std::string> findingsIn(std::string_view bytes, const FileSearch& search)
{
    const auto store = storeOfText(bytes, platform::Locations("/nonexistent", "nobody"), test::silentLog());
    std::vector<std::string> found;
    useFileFindings(
        *store, bytes, search, joinedLineFindings(bytes, search), [&found](const FileFinding& finding) {
            const std::size_t quote = finding.rule.find('"') + 1;
            found.push_back((finding.row ? std::to_string(*finding.row) : "none") + ":"
                + std::to_string(finding.line) + " " + std::string(findingName(finding.kind)) + " "
                + finding.rule.substr(quote, finding.rule.find('"', quote) - quote));
        });
    return found;
}

} // namespace

TEST(FileFindings, ComeByRowThenByKindAndJoinedLinesLast)
{
    const std::string_view bytes = "allow prefix \"/a\" \"any\" r \"\" \"\" \"0allow path \"/b\" \"any\" r\n"
                                   "allow path \"/a/\xC3\xA9\" \"any\" r\n"
                                   "allow path \"/a/none\" \"any\" r\n";
    EXPECT_EQ(
        findingsIn(bytes, {.findings = {FindingKinds::usual(), RulesPlace::nowhere()}, .withLines = true}),
        (std::vector<std::string>{"1:2 redundant /a/\xC3\xA9", "1:2 unwritable /a/\xC3\xA9",
            "2:3 redundant /a/none", "none:1 joined /a"}));
}

TEST(FileFindings, ALineIsCountedAsEditorsDoAndAnEqualRuleStandsOnItsFirst)
{
    const std::string_view bytes = "; a comment\r\n\r\nallow path \"/x\" any -\vdeny path \"/y\" any -\n"
                                   "allow path \"/x\" any -\n";
    EXPECT_EQ(findingsIn(bytes, {.findings = {{FindingKind::doesNotReadBack}}, .withLines = true}),
        (std::vector<std::string>{"0:3 unwritable /x", "1:3 unwritable /y"}));
    EXPECT_EQ(findingsIn(bytes, {.findings = {{FindingKind::doesNotReadBack}}}).front(), "0:0 unwritable /x");
}

TEST(FileFindings, OfTextThatIsNoUtf8AreItsJoinedLines)
{
    const std::string_view bytes
        = "allow path \"/\xC3\" \"any\" r \"\" \"\" \"0allow path \"/b\" \"any\" r\n";
    EXPECT_EQ(findingsIn(bytes, {}).size(), 1U);
}

} // namespace quorvane::workflow
