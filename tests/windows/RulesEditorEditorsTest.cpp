#include "tests/windows/EditorTable.h"
#include "windows/EditPolicyWindowController.h"
#include "windows/EditWatchWindowController.h"
#include "windows/QtText.h"

#include <QLineEdit>
#include <QPushButton>

namespace quorvane::windows {

namespace {

// The rules of KeptRules as their editors save them with another path.
const std::string editedWatchLine = "watch path \"/b\" \"/bin/sh\" r \"seen\"\n";
const std::string editedFirstLine = "allow path \"/b\" \"/bin/sh\" r \"one\" \"\" \"7\"\n";

// Drafts of editors that are open when the program ends.
class KeptRules : public test::EditorTable {
protected:
    KeptRules() { open(test::watchLine + test::firstLine, stateFolder()); }

    std::string stateFolder() const { return box.folder.path("state"); }
    void openAgain() { test::EditorTable::openAgain(stateFolder()); }
    void endAndOpenAgain()
    {
        window->keepUnsavedRules();
        openAgain();
    }

    template <class Editor> Editor* editor() const { return window->findChild<Editor*>(); }
    void typePath(const char* path) const
    {
        auto* field = editor<RuleEditorWindow>()->findChild<QLineEdit*>(QStringLiteral("pathTextField"));
        field->setText(QString::fromLatin1(path));
    }
    std::size_t notices() const { return in<FootNotices>("notices")->count(); }
    QString noticeText() const { return label("noticeText"); }
    void press(const char* title) const
    {
        for (QPushButton* button : in<FootNotices>("notices")->findChildren<QPushButton*>()) {
            if (!button->isHidden() && button->text() == QLatin1String(title))
                return button->click();
        }
        FAIL() << "no button " << title;
    }
};

} // namespace

TEST_F(KeptRules, AreNoneWithoutAChangeInAnEditor)
{
    table->selectRow(1);
    window->doubleClickAction();
    ASSERT_NE(editor<EditPolicyWindowController>(), nullptr);
    endAndOpenAgain();
    EXPECT_EQ(notices(), 0U);
}

TEST_F(KeptRules, AreNoneOfAnEditorThatWasSavedOrCancelled)
{
    window->newPolicyAction();
    typePath("/new/");
    editor<EditPolicyWindowController>()->cancelClicked();
    endAndOpenAgain();
    EXPECT_EQ(notices(), 0U);
    window->newPolicyAction();
    typePath("/new/");
    editor<EditPolicyWindowController>()->saveClicked();
    endAndOpenAgain();
    EXPECT_EQ(notices(), 0U);
}

TEST_F(KeptRules, AreOfferedAtTheNextStartAndOpenTheirEditorOnTheSameRule)
{
    const std::string saved[] = {editedWatchLine + test::firstLine, test::watchLine + editedFirstLine};
    for (const int row : {0, 1}) {
        SCOPED_TRACE(row);
        box.writeUserRules(test::watchLine + test::firstLine);
        openAgain();
        table->selectRow(row);
        window->doubleClickAction();
        typePath("/b");
        endAndOpenAgain();
        EXPECT_EQ(noticeText(), QStringLiteral("1 unsaved rule was kept."));
        EXPECT_EQ(file(), test::watchLine + test::firstLine) << "nothing is saved by itself";
        press("Open");
        auto* opened = editor<RuleEditorWindow>();
        ASSERT_NE(opened, nullptr);
        EXPECT_EQ(opened->rule(), store->ruleAtIndex(static_cast<std::size_t>(row), false));
        EXPECT_EQ(opened->draft().path, "/b");
        EXPECT_TRUE(opened->hasUnsavedChanges());
        opened->saveClicked();
        EXPECT_EQ(file(), saved[row]);
        openAgain();
        EXPECT_EQ(notices(), 0U) << "they are offered once";
    }
}

TEST_F(KeptRules, OfANewRuleAreSavedAsANewRuleWhichIsSelected)
{
    window->newWatchAction();
    typePath("/new/");
    endAndOpenAgain();
    press("Open");
    auto* opened = editor<EditWatchWindowController>();
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(opened->draft().path, "/new/");
    opened->saveClicked();
    EXPECT_EQ(file(), test::watchLine + "watch prefix \"/new/\" \"any\" rwc \"\"\n" + test::firstLine);
    EXPECT_EQ(selectedPaths(), QStringLiteral("/new/"));
}

TEST_F(KeptRules, OfARuleThatHasGoneMeanwhileAreSavedAsANewRuleWithItsTag)
{
    const struct {
        int row;
        std::string left;
        std::string saved;
    } cases[] = {{0, test::firstLine, editedWatchLine + test::firstLine},
        {1, test::watchLine, test::watchLine + editedFirstLine}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.row);
        box.writeUserRules(test::watchLine + test::firstLine);
        openAgain();
        table->selectRow(c.row);
        window->doubleClickAction();
        typePath("/b");
        window->keepUnsavedRules();
        box.writeUserRules(c.left);
        openAgain();
        press("Open");
        editor<RuleEditorWindow>()->saveClicked();
        EXPECT_EQ(file(), c.saved);
    }
}

TEST_F(KeptRules, AreKeptAgainWhenTheyAreStillUnsavedAtTheNextEnd)
{
    window->newPolicyAction();
    typePath("/new/");
    endAndOpenAgain();
    press("Open");
    endAndOpenAgain();
    EXPECT_EQ(notices(), 1U);
    press("Open");
    EXPECT_EQ(editor<EditPolicyWindowController>()->draft().path, "/new/");
}

TEST_F(KeptRules, AreGoneForGoodWhenTheyAreDiscardedAndStayWhenTheNoticeIsDismissed)
{
    window->newPolicyAction();
    typePath("/one/");
    window->newWatchAction();
    editor<EditWatchWindowController>()
        ->findChild<QLineEdit*>(QStringLiteral("pathTextField"))
        ->setText(QStringLiteral("/two/"));
    endAndOpenAgain();
    EXPECT_EQ(noticeText(), QStringLiteral("2 unsaved rules were kept."));
    openAgain();
    EXPECT_EQ(notices(), 1U);
    press("Discard");
    EXPECT_EQ(editor<RuleEditorWindow>(), nullptr);
    openAgain();
    EXPECT_EQ(notices(), 0U);
}

TEST_F(KeptRules, AreKeptOnceHoweverOftenTheEndIsTold)
{
    window->newPolicyAction();
    typePath("/new/");
    window->keepUnsavedRules();
    endAndOpenAgain();
    EXPECT_EQ(noticeText(), QStringLiteral("1 unsaved rule was kept."));
}

} // namespace quorvane::windows
