#include "windows/AuthenticationWindow.h"

#include "desktop/InputLock.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class AuthenticationWindowTest : public testing::Test {
protected:
    void ask(platform::Awaited what)
    {
        window.ask(what, "verify authorization", [this] { ++givenUp; });
    }
    QPushButton& button() { return *window.buttons().button(QDialogButtonBox::Cancel); }
    bool says(const QString& text) const
    {
        for (const QLabel* label : window.findChildren<QLabel*>()) {
            if (label->text().endsWith(text))
                return true;
        }
        return false;
    }

    AuthenticationWindow window{QStringLiteral("/nonexistent")};
    int givenUp = 0;
};

} // namespace

TEST_F(AuthenticationWindowTest, ShowsTheReasonAndWhatIsAwaited)
{
    ask(platform::Awaited::finger);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(says(QStringLiteral(" is trying to verify authorization.")));
    EXPECT_TRUE(says(QStringLiteral("Touch the fingerprint reader, or use your password.")));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Authentication"));
    EXPECT_EQ(button().text(), QStringLiteral("Use Password"));

    ask(platform::Awaited::fingerAgain);
    EXPECT_TRUE(window.isVisible());
    EXPECT_TRUE(says(QStringLiteral("The finger could not be read. Touch the fingerprint reader again.")));
}

TEST_F(AuthenticationWindowTest, AppearsLaterForAPasswordAndLeavesTheKeyboardWhereItIs)
{
    ask(platform::Awaited::password);
    EXPECT_FALSE(window.isVisible()) << "an answer may come at once";
    EXPECT_TRUE(QTest::qWaitFor([this] { return window.isVisible(); }));
    EXPECT_TRUE(says(QStringLiteral("Waiting for the password of an administrator.")));
    EXPECT_TRUE(window.testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_EQ(button().text(), QStringLiteral("Cancel"));

    window.withdraw();
    ask(platform::Awaited::finger);
    EXPECT_FALSE(window.testAttribute(Qt::WA_ShowWithoutActivating));
}

TEST_F(AuthenticationWindowTest, DoesNotAppearAfterItWasWithdrawn)
{
    ask(platform::Awaited::password);
    window.withdraw();
    EXPECT_FALSE(QTest::qWaitFor([this] { return window.isVisible(); }, 1500));
    window.reject();
    EXPECT_EQ(givenUp, 0) << "who asked is no longer there";
}

TEST_F(AuthenticationWindowTest, ComesToTheFrontAgainWhenTheFingerIsAskedForAgain)
{
    ask(platform::Awaited::finger);
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    ask(platform::Awaited::fingerAgain);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
}

TEST_F(AuthenticationWindowTest, TakesInputWhereADialogOrTheWaitKeepsItFromOtherWindows)
{
    ask(platform::Awaited::finger);
    EXPECT_FALSE(window.isModal());
    window.withdraw();
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    const desktop::InputLock lock;
    ask(platform::Awaited::finger);
    EXPECT_TRUE(window.isModal());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    QTest::mouseClick(
        window.windowHandle(), Qt::LeftButton, {}, button().mapTo(&window, button().rect().center()));
    EXPECT_EQ(givenUp, 1);
}

TEST_F(AuthenticationWindowTest, GivesUpOnceByButtonKeyOrClosing)
{
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"button", [this] { button().click(); }},
        {"Escape", [this] { QTest::keyClick(&window, Qt::Key_Escape); }},
        {"closing", [this] { window.close(); }},
    };
    for (const auto& [way, act] : ways) {
        givenUp = 0;
        ask(platform::Awaited::finger);
        act();
        act();
        EXPECT_EQ(givenUp, 1) << way;
        EXPECT_TRUE(window.isVisible()) << way << ": it goes when it is withdrawn";
        window.withdraw();
        EXPECT_FALSE(window.isVisible());
    }
}

} // namespace quorvane::windows
