#include "platform/FileLock.h"
#include "tests/workflow/DocumentSandbox.h"
#include "workflow/RulesDocument.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// Changes of a document while its file cannot be written.

namespace quorvane::workflow {

namespace {

class UnwrittenChanges : public testing::Test {
protected:
    UnwrittenChanges()
    {
        box.writeUserRules(test::fileLine("/a"));
        startWindow();
        window->add("/b");
    }

    void startWindow() { window.emplace(box, DocumentOwner{.lockTimeout = std::chrono::milliseconds(0)}); }
    std::string path() const { return box.locations.userRulesFile(); }
    // As a program does that never finishes writing.
    void blockTheFile()
    {
        m_writer = platform::FileLock::take(path(), platform::LockMode::exclusive, std::chrono::seconds(1));
        ASSERT_TRUE(m_writer.isHeld());
    }
    void writeThem()
    {
        m_writer = platform::FileLock();
        window->document->writeNow();
        EXPECT_EQ(window->document->failure(), std::nullopt);
    }
    // The paths of the rules in the store, in order.
    std::string rules() const { return pathsIn(*window->store); }
    std::string rulesInFile() const { return pathsIn(*box.load()); }
    std::vector<history::JournalVersion> versions() const
    {
        return history::Journal::open(box.folder.path("state"), path(), {}, test::silentLog())->versions();
    }

    test::StoreSandbox box;
    std::optional<test::DocumentAtWork> window;

private:
    static std::string pathsIn(const rules::RuleManager& store)
    {
        std::string paths;
        for (const rules::RuleRef& rule : store.userRules())
            paths += visitRule(
                rule, [](const auto& record) { return std::string(record.fields().path.view()); });
        return paths;
    }

    platform::FileLock m_writer;
};

} // namespace

TEST_F(UnwrittenChanges, AreUndoneBeforeThoseInTheFile)
{
    RulesDocument& document = *window->document;
    blockTheFile();
    window->add("/c");
    window->tag("/c", "new");
    EXPECT_EQ(document.undoName(), "Edit Tag");
    EXPECT_TRUE(document.undo());
    EXPECT_EQ(document.undoName(), "Add Rule");
    EXPECT_EQ(document.redoName(), "Edit Tag");
    EXPECT_TRUE(document.undo());
    EXPECT_EQ(rules(), "/a/b");
    EXPECT_TRUE(document.redo());
    EXPECT_EQ(rules(), "/a/b/c");
    EXPECT_TRUE(document.undo());
    EXPECT_TRUE(document.undo()) << "also what was written before";
    EXPECT_EQ(rules(), "/a");
    EXPECT_FALSE(document.undo());
    writeThem();
    EXPECT_EQ(rulesInFile(), "/a");
}

TEST_F(UnwrittenChanges, BecomeOneVersionThatIsUndoneAsAWhole)
{
    RulesDocument& document = *window->document;
    blockTheFile();
    window->add("/c");
    window->tag("/a", "new");
    window->remove("/b");
    writeThem();
    EXPECT_EQ(rulesInFile(), "/a/c");
    ASSERT_EQ(versions().size(), 3U);
    const history::JournalVersion version = versions().front();
    EXPECT_EQ(version.action, "Change Rules");
    EXPECT_EQ(version.added, 1U);
    EXPECT_EQ(version.removed, 1U);
    EXPECT_EQ(version.changed, 1U);
    EXPECT_EQ(document.undoName(), "Change Rules");
    EXPECT_TRUE(document.undo());
    EXPECT_EQ(rulesInFile(), "/a/b");
    EXPECT_TRUE(document.redo());
    EXPECT_EQ(rulesInFile(), "/a/c");
    EXPECT_TRUE(document.undo());
    EXPECT_TRUE(document.undo());
    EXPECT_EQ(rulesInFile(), "/a");
}

TEST_F(UnwrittenChanges, KeepNameAndStepWhenThereIsOnlyOne)
{
    blockTheFile();
    window->remove("/a");
    writeThem();
    EXPECT_EQ(versions().front().action, "Delete Rule");
    EXPECT_EQ(versions().front().removed, 1U);
    EXPECT_TRUE(window->document->undo());
    EXPECT_EQ(rulesInFile(), "/a/b");
    EXPECT_EQ(versions().front().kind, history::VersionKind::undo);
    EXPECT_EQ(versions().front().of, 3);
}

TEST_F(UnwrittenChanges, ThatWereTakenBackAreNoVersion)
{
    blockTheFile();
    window->add("/c");
    window->document->undo();
    writeThem();
    EXPECT_EQ(versions().size(), 2U);
    EXPECT_EQ(window->document->redoName(), std::nullopt);
    EXPECT_EQ(window->document->undoName(), "Add Rule");
    EXPECT_TRUE(window->document->undo());
    EXPECT_EQ(rulesInFile(), "/a");
}

TEST_F(UnwrittenChanges, CountNoRuleWhoseLineIsCutAnyway)
{
    window->add("/\u00e9");
    blockTheFile();
    window->add("/c");
    window->add("/d");
    writeThem();
    const history::JournalVersion version = versions().front();
    EXPECT_EQ(version.added, 2U);
    EXPECT_EQ(version.removed, 0U);
    EXPECT_EQ(version.changed, 0U);
}

TEST_F(UnwrittenChanges, AreUndoneOneByOneWhereThereIsNoJournal)
{
    window.reset();
    std::filesystem::remove_all(box.folder.path("state"));
    box.folder.write("state", "in the way");
    startWindow();
    blockTheFile();
    window->add("/c");
    window->add("/d");
    writeThem();
    EXPECT_EQ(rulesInFile(), "/a/b/c/d");
    EXPECT_TRUE(window->document->undo());
    EXPECT_EQ(rulesInFile(), "/a/b/c");
    EXPECT_TRUE(window->document->undo());
    EXPECT_EQ(rulesInFile(), "/a/b");
}

TEST_F(UnwrittenChanges, AreNotKeptForEver)
{
    constexpr int moreThanUndoAndRowsReachBack = 5000;
    std::filesystem::rename(path(), path() + ".away");
    std::filesystem::create_directory(path());
    window->add("/brief");
    const std::weak_ptr<rules::PolicyRule> brief = std::get<rules::PolicyRulePtr>(window->ruleWith("/brief"));
    window->remove("/brief");
    const rules::RuleRef kept = window->ruleWith("/a");
    for (int number = 0; number < moreThanUndoAndRowsReachBack; ++number)
        window->document->perform(taggingOf({kept}, std::to_string(number)), {"Edit Tag"});
    EXPECT_TRUE(brief.expired());
    std::filesystem::remove(path());
    std::filesystem::rename(path() + ".away", path());
    writeThem();
    EXPECT_EQ(rulesInFile(), "/a/b");
    EXPECT_EQ(versions().front().changed, 1U);
}

} // namespace quorvane::workflow
