#include "tests/pictures/MainWindowPictures.h"
#include "windows/WindowLook.h"

namespace quorvane::test {

namespace {

constexpr platform::Appearance light{};
constexpr platform::Appearance dark{.isDark = true};
constexpr platform::Appearance lightInHighContrast{.hasHighContrast = true};
constexpr platform::Appearance darkInHighContrast{.isDark = true, .hasHighContrast = true};

class TablePictures : public MainWindowPictures {
protected:
    ~TablePictures() override { windows::setAppearance(*qApp, light); }

    void openIn(platform::Appearance look)
    {
        windows::setAppearance(*qApp, look);
        openOn(rulesOfAllKinds());
        window->hideSystemAction();
        selectAndRead({"/usr/lib/"});
    }
};

} // namespace

TEST_F(TablePictures, ShowCellsOfEveryKindInLight)
{
    openIn(light);
    EXPECT_TRUE(looksAsKept("table", pictureOfWindow()));
    EXPECT_TRUE(readsAsKept("main-window", wordsOf(*window)));
}

TEST_F(TablePictures, ShowCellsOfEveryKindInDark)
{
    openIn(dark);
    EXPECT_TRUE(looksAsKept("table-dark", pictureOfWindow()));
}

TEST_F(TablePictures, ShowCellsOfEveryKindInHighContrast)
{
    openIn(lightInHighContrast);
    EXPECT_TRUE(looksAsKept("table-high-contrast", pictureOfWindow()));
}

TEST_F(TablePictures, ShowCellsOfEveryKindInDarkHighContrast)
{
    openIn(darkInHighContrast);
    EXPECT_TRUE(looksAsKept("table-dark-high-contrast", pictureOfWindow()));
}

TEST_F(TablePictures, ShowTwoDotsForOneWhereTheScreenHasThem)
{
    openOn(rulesOfAllKinds(), {600, 500});
    window->hideSystemAction();
    useTwoDots(*window);
    EXPECT_TRUE(looksAsKept("table-two-dots", pictureOfTable()));
}

TEST_F(TablePictures, ShowSelectedRowsWithAndWithoutTheKeyboard)
{
    openOn(rulesOfAllKinds(), {620, 500});
    selectPaths({".pem", "/etc/passwd", "/usr/", ".jpg"});
    const QImage withKeyboard = pictureOfTable();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_TRUE(looksAsKept("table-selected", stacked({withKeyboard, pictureOfTable()})));
}

TEST_F(TablePictures, ShowATagThatIsEdited)
{
    openOn(rulesOfAllKinds(), {560, 300});
    selectPaths({"/Volumes/"});
    window->editTagOfSelectedRule();
    EXPECT_TRUE(looksAsKept("table-tag", pictureOfTable()));
}

TEST_F(TablePictures, ShowWhyThereAreNoRowsAndTheOrder)
{
    openOn(rulesOfAllKinds(), {560, 270});
    window->sortByColumn(static_cast<int>(workflow::RuleColumn::path));
    const QImage sorted = pictureOfTable();
    in<QLineEdit>("searchField")->setText(QStringLiteral("nothing of that name"));
    window->searchFieldAction();
    const QImage empty = pictureOf(*window);
    EXPECT_TRUE(looksAsKept("table-order-and-nothing", stacked({sorted, empty})));
}

} // namespace quorvane::test
