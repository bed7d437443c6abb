#include "windows/PathField.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

namespace quorvane::windows {

namespace {

class PathFields : public testing::Test {
protected:
    // Drops files, or text, and answers whether they were taken.
    static bool drop(QWidget& target, const QList<QUrl>& files, Qt::DropActions possible = Qt::CopyAction)
    {
        QMimeData data;
        data.setUrls(files);
        QDragEnterEvent entered({5, 5}, possible, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&target, &entered);
        QDropEvent dropped({5, 5}, possible, &data, Qt::LeftButton, Qt::NoModifier);
        dropped.ignore();
        QApplication::sendEvent(&target, &dropped);
        return dropped.isAccepted() && dropped.dropAction() == Qt::CopyAction;
    }
    static QUrl file(const char* path) { return QUrl::fromLocalFile(QString::fromUtf8(path)); }

    PathField field{QStringLiteral("Program")};
};

} // namespace

TEST_F(PathFields, AreNamedToScreenReaders)
{
    EXPECT_EQ(field.field().accessibleName(), QStringLiteral("Program"));
    EXPECT_EQ(field.findChild<QPushButton*>()->accessibleName(), QStringLiteral("Browse for: Program"));
    EXPECT_FALSE(field.findChild<QPushButton*>()->autoDefault()) << "Return belongs to the window";
    EXPECT_EQ(field.focusProxy(), &field.field());
}

TEST_F(PathFields, TakeAPathAsItIsAndSaySo)
{
    const QSignalSpy changes(&field, &PathField::pathChanged);
    field.setPath("/M\u00fcsik/a b");
    EXPECT_EQ(field.path(), "/M\u00fcsik/a b");
    EXPECT_EQ(changes.count(), 1);
    field.field().insert(QStringLiteral("\n/c"));
    EXPECT_EQ(field.path(), "/M\u00fcsik/a b/c") << "on one line";
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(PathFields, TakeWhatIsChosenInThePanelThatTheirButtonOpens)
{
    field.setPath("/usr/lib");
    field.show();
    const std::pair<void (QDialog::*)(), const char*> answers[]
        = {{&QDialog::reject, "/usr/lib"}, {&QDialog::accept, "/usr/lib/"}};
    for (const auto& [answer, path] : answers) {
        QTimer::singleShot(0, &field, [answer = answer] {
            auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(panel, nullptr);
            EXPECT_EQ(panel->windowTitle(), QStringLiteral("Program"));
            (panel->*answer)();
        });
        field.findChild<QPushButton*>()->click();
        EXPECT_EQ(field.path(), path);
    }
}

TEST_F(PathFields, TakeTheFirstOfDroppedFilesInPlaceOfTheirText)
{
    field.setPath("/before");
    EXPECT_TRUE(drop(field.field(), {file("/a b/\u00e9"), file("/second")}));
    EXPECT_EQ(field.path(), "/a b/\u00e9");
}

TEST_F(PathFields, TakeNoDropThatWouldMoveTheFile)
{
    field.setPath("/before");
    drop(field.field(), {file("/after")}, Qt::MoveAction);
    EXPECT_NE(field.path(), "/after");
}

TEST_F(PathFields, TakeDropsOnTheWidgetsAroundThem)
{
    QWidget around;
    field.takeDropsOn(around);
    EXPECT_TRUE(around.acceptDrops());
    EXPECT_TRUE(drop(around, {file("/dropped")}));
    EXPECT_EQ(field.path(), "/dropped");
    EXPECT_FALSE(drop(around, {QUrl(QStringLiteral("https://example.com/page"))}));
    EXPECT_EQ(field.path(), "/dropped");
}

} // namespace quorvane::windows
