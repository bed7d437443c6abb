#include "windows/SettingsWindow.h"

#include "tests/support/TemporaryFolder.h"
#include "windows/Shades.h"

#include <QCheckBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace quorvane::windows {

namespace {

class SettingsWindowTest : public testing::Test {
protected:
    ~SettingsWindowTest() override { delete window; }

    void open(const std::string& text)
    {
        if (!text.empty())
            folder.write("settings.ini", text);
        window = new SettingsWindow(folder.path("settings.ini"));
        QObject::connect(window, &SettingsWindow::saved,
            [this](const workflow::ProgramSettings& settings) { savedSettings = settings; });
        window->show();
    }
    template <class Child> Child* in(const char* name) const
    {
        return window->findChild<Child*>(QString::fromLatin1(name));
    }
    void click(const char* name) const { in<QPushButton>(name)->click(); }
    bool isClosed() const
    {
        return QTest::qWaitFor([this] { return window.isNull(); });
    }
    std::string file() const { return test::TemporaryFolder::contents(folder.path("settings.ini")); }
    QString problem() const
    {
        const auto* label = in<QLabel>("problemLabel");
        return label->isHidden() ? QString() : label->text().remove(QChar(0x200b));
    }

    test::TemporaryFolder folder;
    QPointer<SettingsWindow> window;
    std::optional<workflow::ProgramSettings> savedSettings;
};

} // namespace

TEST_F(SettingsWindowTest, ShowsTheUsualSettingsWithoutAFile)
{
    open("");
    EXPECT_FALSE(in<QCheckBox>("wholeLinesCheckBox")->isChecked());
    EXPECT_EQ(in<QSpinBox>("daysSpinBox")->value(), 7);
    EXPECT_EQ(in<QSpinBox>("sizeSpinBox")->value(), 1024);
    EXPECT_EQ(problem(), QString());
}

TEST_F(SettingsWindowTest, SavesWhatIsChangedAndKeepsUnknownKeys)
{
    open("; mine\n[rules]\nwholeLines=false\nother=1\n[history]\ndays=3\nbytes=5000000\n");
    EXPECT_EQ(in<QSpinBox>("daysSpinBox")->value(), 3);
    EXPECT_EQ(in<QSpinBox>("sizeSpinBox")->value(), 4);
    in<QCheckBox>("wholeLinesCheckBox")->click();
    in<QSpinBox>("daysSpinBox")->setValue(30);
    click("saveButton");
    EXPECT_TRUE(isClosed());
    EXPECT_EQ(file(), "; mine\n[rules]\nwholeLines=true\nother=1\n[history]\ndays=30\nbytes=5000000\n")
        << "a size that was not changed stays to the byte";
    ASSERT_TRUE(savedSettings);
    EXPECT_TRUE(savedSettings->wholeLines);
    EXPECT_EQ(savedSettings->history.days, 30U);
}

TEST_F(SettingsWindowTest, ASizeIsSavedInBytes)
{
    open("");
    in<QSpinBox>("sizeSpinBox")->setValue(2);
    click("saveButton");
    EXPECT_TRUE(isClosed());
    EXPECT_EQ(savedSettings->history.bytes, std::uint64_t{2} << 20U);
}

TEST_F(SettingsWindowTest, ABrokenFileMeansTheUsualSettingsAndIsTold)
{
    open("[history]\ndays=many\n");
    EXPECT_EQ(in<QSpinBox>("daysSpinBox")->value(), 7);
    EXPECT_TRUE(problem().contains(QStringLiteral("line 2 could not be used"))) << problem().toStdString();
}

TEST_F(SettingsWindowTest, AFailedSaveSaysWhyAndStaysOpen)
{
    folder.write("no folder", "");
    window = new SettingsWindow(folder.path("no folder/settings.ini"));
    window->show();
    in<QCheckBox>("wholeLinesCheckBox")->click();
    click("saveButton");
    EXPECT_TRUE(problem().startsWith(QStringLiteral("The settings could not be saved: ")))
        << problem().toStdString();
    EXPECT_TRUE(window->isVisible());
}

TEST_F(SettingsWindowTest, ExplainsEachSettingBelowItAndToScreenReaders)
{
    open("");
    const QString ofLines = in<QLabel>("wholeLinesHelp")->text();
    const QString ofHistory = in<QLabel>("historyHelp")->text();
    EXPECT_EQ(in<QCheckBox>("wholeLinesCheckBox")->accessibleDescription(), ofLines);
    EXPECT_EQ(in<QSpinBox>("daysSpinBox")->accessibleDescription(), ofHistory);
    EXPECT_EQ(in<QSpinBox>("sizeSpinBox")->accessibleDescription(), ofHistory);
    for (const char* name : {"wholeLinesHelp", "historyHelp"}) {
        const auto* help = in<QLabel>(name);
        EXPECT_EQ(help->palette().color(QPalette::WindowText), shades::faintText.in({})) << name;
        EXPECT_GE(help->height(), help->heightForWidth(help->width())) << name;
        EXPECT_GT(help->height(), help->fontMetrics().height()) << "it is wrapped";
    }
    EXPECT_EQ(in<QLabel>("problemLabel")->palette().color(QPalette::WindowText), shades::failureText.in({}));
}

TEST_F(SettingsWindowTest, CancelAndEscapeSaveNothing)
{
    open("[rules]\nwholeLines=false\n");
    in<QCheckBox>("wholeLinesCheckBox")->click();
    QTest::keyClick(window, Qt::Key_Escape);
    EXPECT_TRUE(isClosed());
    EXPECT_EQ(file(), "[rules]\nwholeLines=false\n");
    EXPECT_FALSE(savedSettings);
}

} // namespace quorvane::windows
