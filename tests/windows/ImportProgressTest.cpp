#include "windows/ImportProgress.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvane::windows {

TEST(ImportProgress, AppearsOnlyWhenAnImportTakesLong)
{
    ImportProgress progress(nullptr, 1000);
    EXPECT_EQ(progress.minimumDuration(), 300);
    EXPECT_EQ(progress.maximum(), 1000);
    EXPECT_FALSE(progress.isVisible());
    EXPECT_EQ(progress.labelText(), QStringLiteral("Importing rules…"));
    EXPECT_EQ(progress.windowTitle(), QStringLiteral("Import"));
}

TEST(ImportProgress, IsNotUpdatedForEveryRule)
{
    ImportProgress progress(nullptr, 1000);
    QTest::qWait(50);
    progress.setImported(1);
    progress.setImported(2); // at once
    EXPECT_EQ(progress.value(), 1);
    QTest::qWait(50);
    progress.setImported(3);
    EXPECT_EQ(progress.value(), 3);
}

TEST(ImportProgress, CannotBeLeftBeforeTheEnd)
{
    ImportProgress progress(nullptr, 1000);
    progress.show();
    EXPECT_TRUE(progress.findChildren<QPushButton*>().isEmpty()) << "there is nothing to cancel";
    progress.close();
    EXPECT_TRUE(progress.isVisible());
    QTest::keyClick(&progress, Qt::Key_Escape);
    EXPECT_TRUE(progress.isVisible());
    EXPECT_FALSE(progress.wasCanceled());
    EXPECT_EQ(progress.windowModality(), Qt::ApplicationModal);
}

} // namespace quorvane::windows
