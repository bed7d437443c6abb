#include "windows/HistoryReader.h"

#include "tests/rules/StoreSandbox.h"
#include "tests/support/TestDocument.h"
#include "workflow/RuleEdits.h"
#include "workflow/RulesHistory.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace quorvane::windows {

namespace {

class HistoryReaderTest : public testing::Test {
protected:
    HistoryReaderTest()
    {
        box.writeUserRules("allow path /a any r\n");
        store = box.load();
        document = std::make_unique<test::TestDocument>(*store, run);
    }
    void add(const std::string& path)
    {
        document->perform(
            workflow::additionOf(test::policyRule({.path = path, .processName = "any", .operations = 1})),
            {"Add Rule"});
    }
    static void refresh(HistoryReader& reader)
    {
        reader.refresh();
        bool isOver = false;
        reader.readBytes(1, [&isOver](const auto& /*bytes*/) { isOver = true; }); // read after the list
        ASSERT_TRUE(QTest::qWaitFor([&isOver] { return isOver; }));
    }

    test::StoreSandbox box;
    std::unique_ptr<rules::RuleManager> store;
    workflow::RunState run;
    std::unique_ptr<test::TestDocument> document;
};

} // namespace

TEST_F(HistoryReaderTest, ReadsTheVersionsAnewOnlyAfterAChange)
{
    add("/b");
    const workflow::RulesHistory history(*document);
    HistoryReader reader(history);
    const QSignalSpy versionsRead(&reader, &HistoryReader::versionsRead);

    refresh(reader);
    EXPECT_EQ(versionsRead.count(), 1);
    refresh(reader);
    EXPECT_EQ(versionsRead.count(), 1);
    add("/c");
    refresh(reader);
    EXPECT_EQ(versionsRead.count(), 2);
}

} // namespace quorvane::windows
