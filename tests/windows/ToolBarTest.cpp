#include "windows/ToolBar.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QPixmap>
#include <QWidget>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(ToolBar, HasIconsWhereThereIsRoomForThem)
{
    QPixmap image(16, 16);
    image.fill(Qt::black);
    QWidget container;
    ToolBar bar(&container);
    bar.setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    for (const char* title : {"First", "Second", "Third"})
        bar.addAction(QIcon(image), QString::fromLatin1(title));
    container.resize(1000, 100);
    container.show();
    const auto styleAt = [&bar](int width) {
        bar.resize(width, 30);
        return bar.toolButtonStyle();
    };
    EXPECT_EQ(styleAt(900), Qt::ToolButtonTextBesideIcon);
    const int needed = bar.sizeHint().width();
    EXPECT_EQ(styleAt(needed), Qt::ToolButtonTextBesideIcon);
    EXPECT_EQ(styleAt(needed - 1), Qt::ToolButtonTextOnly);
    EXPECT_EQ(styleAt(needed - 2), Qt::ToolButtonTextOnly);
    EXPECT_EQ(styleAt(needed), Qt::ToolButtonTextBesideIcon) << "they come back";
}

} // namespace quorvane::windows
