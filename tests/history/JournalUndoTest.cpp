#include "history/Journal.h"

#include "tests/history/JournalFolder.h"

#include <gtest/gtest.h>

namespace quorvane::history {

namespace {

// A journal to which versions are added in shorthand.
class UndoJournal {
public:
    std::int64_t action() { return add(VersionKind::action, {}); }
    std::int64_t foreign() { return add(VersionKind::foreign, {}); }
    std::int64_t undo() { return add(VersionKind::undo, m_journal->undoable()->number); }
    std::int64_t redo() { return add(VersionKind::redo, m_journal->redoable()->number); }

    Journal& operator*() { return *m_journal; }

    // The numbers of the undoable and the redoable version, 0 for none.
    std::int64_t undoable() { return numberOf(m_journal->undoable()); }
    std::int64_t redoable() { return numberOf(m_journal->redoable()); }

private:
    static std::int64_t numberOf(const std::optional<JournalVersion>& version)
    {
        return version ? version->number : 0;
    }
    std::int64_t add(VersionKind kind, std::optional<std::int64_t> of)
    {
        const std::string bytes = "rules " + std::to_string(++m_made);
        NewVersion made = test::version(bytes);
        made.kind = kind;
        made.of = of;
        return m_journal->record(made).value_or(-1);
    }

    test::JournalFolder m_folder;
    std::unique_ptr<Journal> m_journal = m_folder.journal();
    int m_made = 0;
};

} // namespace

TEST(JournalUndo, TakesBackOneActionAfterAnotherAndDoesThemAgainInTurn)
{
    UndoJournal journal;
    journal.foreign();
    const auto first = journal.action();
    const auto second = journal.action();
    EXPECT_EQ(journal.undoable(), second);
    EXPECT_EQ(journal.redoable(), 0);

    journal.undo();
    EXPECT_EQ(journal.undoable(), first);
    EXPECT_EQ(journal.redoable(), second);

    journal.undo();
    EXPECT_EQ(journal.undoable(), 0);
    EXPECT_EQ(journal.redoable(), first);

    journal.redo();
    EXPECT_EQ(journal.undoable(), first);
    EXPECT_EQ(journal.redoable(), second);
}

TEST(JournalUndo, LeavesVersionsOfOtherProgramsAlone)
{
    UndoJournal journal;
    journal.foreign();
    const auto action = journal.action();
    journal.foreign();
    EXPECT_EQ(journal.undoable(), action);

    journal.undo();
    journal.foreign();
    EXPECT_EQ(journal.undoable(), 0);
    EXPECT_EQ(journal.redoable(), action);
}

TEST(JournalUndo, DoesNothingAgainAfterANewAction)
{
    UndoJournal journal;
    journal.foreign();
    journal.action();
    journal.undo();

    const auto action = journal.action();

    EXPECT_EQ(journal.redoable(), 0);
    EXPECT_EQ(journal.undoable(), action);
}

TEST(JournalUndo, PassesOverAWriteThatChangedNoRule)
{
    UndoJournal journal;
    const auto action = journal.action();
    NewVersion rewritten = test::version("the same rules, spelt anew");
    rewritten.added = 0;
    (*journal).record(rewritten);
    EXPECT_EQ(journal.undoable(), action);
}

TEST(JournalUndo, NeedsTheVersionBefore)
{
    UndoJournal journal;
    const auto first = journal.action();
    EXPECT_EQ(journal.undoable(), first) << "before the first there was nothing";
    const auto second = journal.action();
    const auto third = journal.action();

    (*journal).forgetBefore(second);
    EXPECT_EQ(journal.undoable(), third);
    journal.undo();
    EXPECT_EQ(journal.undoable(), 0) << "version " << first << " is forgotten";

    (*journal).forgetAll();
    EXPECT_EQ(journal.redoable(), 0);
}

} // namespace quorvane::history
