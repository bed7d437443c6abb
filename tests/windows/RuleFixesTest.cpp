#include "windows/RuleFixes.h"

#include "tests/windows/EditorTable.h"
#include "windows/SelectionController.h"
#include "workflow/RuleEdits.h"

#include <stdexcept>

namespace quorvane::windows {

namespace {

class RuleFixesTest : public test::EditorTable {
protected:
    RuleFixesTest()
    {
        const std::string program = box.folder.write("program", "text");
        open(test::firstLine + "allow path \"any\" \"" + program + "\" r \"\" \"" + std::string(64, 'a')
            + "\" \"0\"\n");
        selection = std::make_unique<SelectionController>(*window, *window, *document);
        fixes = std::make_unique<RuleFixes>(*window, *document, *selection);
    }

    rules::RuleRef ruleOf(const std::string& path) const
    {
        for (const rules::RuleRef& rule : store->userRules()) {
            if (visitRule(rule, [&](const auto& record) { return record.path().view() == path; }))
                return rule;
        }
        throw std::out_of_range(path);
    }
    // As another part of the window does meanwhile.
    void remove(const rules::RuleRef& rule)
    {
        document->perform(workflow::deletionOf(*store, {rule}), {"Delete Rule"});
        window->reloadData();
    }

    std::unique_ptr<SelectionController> selection;
    std::unique_ptr<RuleFixes> fixes;
};

} // namespace

TEST_F(RuleFixesTest, ChangeNothingForARuleThatIsGone)
{
    const rules::RuleRef gone = ruleOf("any");
    remove(gone);
    const rules::RuleRef equal = test::policyRule(std::get<rules::PolicyRulePtr>(gone)->fields());
    document->perform(workflow::additionOf(equal), {"Add Rule"});
    window->reloadData();
    const std::string before = file();
    fixes->show(gone);
    fixes->remove(gone);
    fixes->rebind(gone);
    EXPECT_EQ(document->undoName(), "Add Rule");
    EXPECT_EQ(file(), before);
    EXPECT_EQ(selectedPaths(), QString());
    // What is read on the other thread comes in its order.
    fixes->rebind(equal);
    ASSERT_TRUE(QTest::qWaitFor([&] { return file() != before; }));
    EXPECT_EQ(store->userRules().size(), 2U);
    window->undo();
    EXPECT_EQ(document->undoName(), "Add Rule") << "the one binding was all";
    EXPECT_EQ(notice(), QString());
}

TEST_F(RuleFixesTest, RemoveExactlyTheRuleAsOneAction)
{
    const rules::RuleRef other = ruleOf("any");
    fixes->remove(ruleOf("/a/"));
    EXPECT_EQ(store->userRules(), std::vector{other});
    EXPECT_EQ(document->undoName(), "Delete Rule");
    window->undo();
    EXPECT_EQ(store->userRules().size(), 2U);
}

} // namespace quorvane::windows
