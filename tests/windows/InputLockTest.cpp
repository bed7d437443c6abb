#include "desktop/InputLock.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QEventLoop>
#include <QInputMethodEvent>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>

namespace quorvane::windows {

namespace {

// A window with a button that has the keyboard and an action with a shortcut; counts what reaches it.
class GuardedWindow : public QMainWindow {
public:
    GuardedWindow()
    {
        auto* button = new QPushButton(this);
        setCentralWidget(button);
        connect(button, &QPushButton::clicked, this, [this] { ++clicks; });
        auto* action = new QAction(this);
        action->setShortcut(Qt::CTRL | Qt::Key_K);
        connect(action, &QAction::triggered, this, [this] { ++shortcuts; });
        addAction(action);
        show();
        button->setFocus();
        activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(this));
    }
    void use()
    {
        QTest::mouseClick(windowHandle(), Qt::LeftButton, {}, rect().center());
        QTest::keyClick(windowHandle(), Qt::Key_Space);
        QTest::keyClick(windowHandle(), Qt::Key_K, Qt::ControlModifier);
        QCoreApplication::processEvents();
    }

    int clicks = 0;
    int shortcuts = 0;
};

} // namespace

TEST(InputLock, DropsKeysClicksAndShortcuts)
{
    GuardedWindow window;
    auto lock = std::make_unique<desktop::InputLock>();
    window.use();
    lock.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(window.clicks, 0) << "nor are they kept for later";
    EXPECT_EQ(window.shortcuts, 0);

    window.use();
    EXPECT_EQ(window.clicks, 2) << "by mouse and by keyboard";
    EXPECT_EQ(window.shortcuts, 1);
}

TEST(InputLock, DropsWhatWheelsMethodsOfInputAndMenusBring)
{
    class Recorder : public QWidget {
    public:
        QList<QEvent::Type> arrived;

    protected:
        bool event(QEvent* event) override
        {
            arrived.append(event->type());
            event->accept();
            return true;
        }
    } recorder;
    const QPoint place(5, 5);
    QWheelEvent wheel(place, place, {}, {0, 120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QInputMethodEvent inputMethod;
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, place, place);
    for (QEvent* event :
        {static_cast<QEvent*>(&wheel), static_cast<QEvent*>(&inputMethod), static_cast<QEvent*>(&menu)}) {
        for (const bool isLocked : {true, false}) {
            const auto lock = isLocked ? std::make_unique<desktop::InputLock>() : nullptr;
            recorder.arrived.clear();
            QCoreApplication::sendEvent(&recorder, event);
            EXPECT_EQ(recorder.arrived.contains(event->type()), !isLocked) << event->type();
        }
    }
}

TEST(InputLock, KeepsWindowsFromBeingClosed)
{
    GuardedWindow window;
    {
        const desktop::InputLock lock;
        EXPECT_FALSE(window.close());
        EXPECT_TRUE(window.isVisible());
    }
    EXPECT_TRUE(window.close());
    EXPECT_FALSE(window.isVisible());
}

TEST(InputLock, DoesNotHoldUpTheEndOfTheProgram)
{
    const GuardedWindow window;
    QTimer::singleShot(0, &window, [&] {
        const desktop::InputLock lock;
        QEventLoop wait;
        QTimer::singleShot(0, &wait, [] { QCoreApplication::exit(); });
        wait.exec();
    });
    QTimer::singleShot(20000, &window, [] { QCoreApplication::exit(1); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
    EXPECT_TRUE(window.isVisible()) << "it might be what waits";
}

TEST(InputLock, LetsThroughToAnExemptWindowAndWhatItOpens)
{
    GuardedWindow window;
    desktop::InputLock::exempt(window);
    const desktop::InputLock lock;
    window.use();
    EXPECT_EQ(window.clicks, 2);
    EXPECT_EQ(window.shortcuts, 1);

    QPushButton popup;
    popup.setParent(&window, Qt::Popup);
    popup.show();
    int clicks = 0;
    QObject::connect(&popup, &QPushButton::clicked, [&] { ++clicks; });
    QTest::mouseClick(&popup, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
}

TEST(InputLock, MayStandInsideAnother)
{
    GuardedWindow window;
    auto outer = std::make_unique<desktop::InputLock>();
    {
        const desktop::InputLock inner;
    }
    window.use();
    EXPECT_EQ(window.clicks, 0);
    outer.reset();
    window.use();
    EXPECT_EQ(window.clicks, 2);
}

} // namespace quorvane::windows
