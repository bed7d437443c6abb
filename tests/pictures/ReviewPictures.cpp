#include "tests/pictures/MainWindowPictures.h"
#include "windows/ForesightBar.h"
#include "windows/ImportWindowController.h"
#include "workflow/ImportCells.h"

#include <QPushButton>
#include <QToolButton>

namespace quorvane::test {

namespace {

constexpr const char* reviewedRules = "watch prefix \"/Volumes/\" \"any\" m \"disks\"\n"
                                      "allow prefix \"/etc/\" \"/bin/sh\" rw \"shell\" \"\" \"0\"\n"
                                      "allow path \"/etc/passwd\" \"/bin/sh\" r \"covered\" \"\" \"0\"\n"
                                      "deny path \"/nonexistent/letter.txt\" \"/bin/sh\" w \"\" \"\" \"0\"\n"
                                      "allow prefix \"/usr/\" \"/nonexistent/tool\" r \"\" \"\" \"0\"\n"
                                      "deny prefix \"/usr/\" \"/bin/cat\" wcx \"\" \"\" \"0\"\n";

class ReviewPictures : public TableWindow<windows::ImportWindowController, workflow::ImportColumn> {
protected:
    ReviewPictures()
    {
        QSettings().clear();
        store.addPolicyRule(policyRule({.path = "/etc/", .processName = "/bin/sh", .operations = 3}));
    }
    ~ReviewPictures() override { window.reset(); } // before the document

    // Reviews a file of these rules, one of which the user has already.
    void openOn(const std::string& rules)
    {
        window = std::make_unique<windows::ImportWindowController>(document, workspace, log.log());
        window->setPath(folder.write("Rules.quorv", rules));
        window->resize(680, 270);
        QSignalSpy counted(window.get(), &windows::ImportWindowController::wasCounted);
        show();
        ASSERT_TRUE(!counted.isEmpty() || counted.wait());
    }
    QImage pictureOfWindow()
    {
        beginBands(*table);
        return pictureOf(*window);
    }
    QImage pictureOfTable()
    {
        beginBands(*table);
        return pictureOf(*table);
    }

    TemporaryFolder folder;
    rules::RuleManager store{platform::Locations(folder.path("root"), "ann"), silentLog()};
    TestDocument document{store, run};
};

} // namespace

TEST_F(ReviewPictures, ShowTicksOfAllOfSomeAndOfNoRules)
{
    openOn(reviewedRules);
    const QImage all = pictureOfWindow();
    select({0, 2, 3});
    window->toggleSelectedTicks();
    const QImage some = pictureOfTable();
    table->clearSelection();
    window->toggleAllTicks();
    window->toggleAllTicks();
    EXPECT_TRUE(looksAsKept("review", stacked({all, some, pictureOfTable()})));
}

TEST_F(ReviewPictures, ShowOneKindAndWhatIsNotListed)
{
    openOn(std::string(reviewedRules)
        + "allow prefix \"/cut/\nno rule at all\n"
          "deny path \"/a\" \"any\" r \"\" \"\" \"0\"allow path \"/b\" \"any\" r \"\" \"\" \"0\"\n");
    const QImage unlisted = pictureOfWindow();
    EXPECT_TRUE(readsAsKept("review", wordsOf(*window)));
    const auto buttons = window->findChild<windows::ForesightBar*>()->findChildren<QToolButton*>();
    for (QToolButton* button : buttons) {
        if (button->isEnabled())
            button->click();
    }
    EXPECT_TRUE(looksAsKept("review-of-one-kind", stacked({unlisted, pictureOfWindow()})));
}

} // namespace quorvane::test
