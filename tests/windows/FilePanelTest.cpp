#include "windows/FilePanel.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"
#include "windows/QtText.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace quorvane::windows {

namespace {

// A panel over a folder with a file and a folder, used as a person uses it.
class OpenPanel : public testing::Test {
protected:
    OpenPanel()
    {
        folder.write("file", "");
        folder.write("sub/inner", "");
        folder.write("sub/file", "");
        parent->show();
    }

    // What comes of `use`; none when that leaves the panel open.
    std::optional<std::string> chosen(const std::string& start, const std::function<void(QFileDialog&)>& use)
    {
        bool used = false;
        QTimer::singleShot(0, [&] {
            const QPointer<QFileDialog> panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(panel, nullptr);
            used = true;
            use(*panel);
            if (!panel.isNull() && panel->isVisible())
                panel->reject();
        });
        auto path = chooseFileOrFolder(*parent, QStringLiteral("Title"), start);
        EXPECT_TRUE(used);
        return path;
    }
    static QLineEdit* name(const QFileDialog& panel)
    {
        return panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    }
    static QPushButton* button(const QFileDialog& panel)
    {
        return panel.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
    }
    static QPoint placeOf(const QFileDialog& panel, const QString& entry)
    {
        const auto* list = panel.findChild<QTreeView*>(QStringLiteral("treeView"));
        QModelIndex found;
        EXPECT_TRUE(QTest::qWaitFor([&] {
            for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row) {
                if (const auto index = list->model()->index(row, 0, list->rootIndex()); index.data() == entry)
                    found = index;
            }
            return found.isValid();
        }));
        return list->viewport()->mapTo(&panel, list->visualRect(found).center());
    }
    static void click(const QFileDialog& panel, const char* entry)
    {
        QTest::mouseClick(panel.windowHandle(), Qt::LeftButton, {}, placeOf(panel, QLatin1String(entry)));
    }
    static void doubleClick(const QFileDialog& panel, const char* entry)
    {
        QTest::mouseDClick(panel.windowHandle(), Qt::LeftButton, {}, placeOf(panel, QLatin1String(entry)));
    }

    const test::TemporaryFolder folder;
    std::unique_ptr<QWidget> parent = std::make_unique<QWidget>();
};

} // namespace

TEST(FolderForPanel, IsTheNearestOneThatExists)
{
    const test::TemporaryFolder folder;
    const std::string file = folder.write("a b/file", "");
    const std::string home = fromQt(QDir::homePath());
    const struct {
        const char* why;
        std::string start;
        std::string folder;
    } cases[] = {
        {"a folder is itself", folder.path("a b"), folder.path("a b")},
        {"also with its slash", folder.path("a b/"), folder.path("a b/")},
        {"a file's folder", file, folder.path("a b")},
        {"of a program and its parent, the program's", file + " via /bin/sh", folder.path("a b")},
        {"what is gone is looked for further up", folder.path("gone/further/still"), folder.path()},
        {"nothing is left but the root", "/gone", "/"},
        {"a name extension is nowhere", ".jpg", home},
        {"neither is a name", "a/b", home},
        {"a path too long to exist", "/" + std::string(100000, '/'), home},
    };
    for (const auto& c : cases)
        EXPECT_EQ(fromQt(folderForPanel(c.start)), c.folder) << c.why;
}

TEST_F(OpenPanel, IsTitledAndStartsInTheFolder)
{
    chosen(folder.path("sub/"), [&](QFileDialog& panel) {
        EXPECT_EQ(panel.windowTitle(), QStringLiteral("Title"));
        EXPECT_EQ(fromQt(panel.directory().absolutePath()), folder.path("sub"));
        EXPECT_EQ(panel.parentWidget(), parent.get());
        EXPECT_EQ(panel.size(), QSize(760, 480));
        EXPECT_EQ(panel.labelText(QFileDialog::FileName), QStringLiteral("&Name:"));
        EXPECT_EQ(button(panel)->text(), QStringLiteral("&Choose"));
    });
}

TEST_F(OpenPanel, ChoosesAFileThatIsClicked)
{
    EXPECT_EQ(chosen(folder.path(),
                  [](QFileDialog& panel) {
                      click(panel, "file");
                      EXPECT_TRUE(button(panel)->isEnabled());
                      button(panel)->click();
                  }),
        folder.path("file"));
}

TEST_F(OpenPanel, ChoosesAFolderThatIsClickedWithASlash)
{
    EXPECT_EQ(chosen(folder.path(),
                  [](QFileDialog& panel) {
                      click(panel, "sub");
                      EXPECT_TRUE(button(panel)->isEnabled());
                      button(panel)->click();
                  }),
        folder.path("sub/"));
}

TEST_F(OpenPanel, ADoubleClickOpensAFolderAndChoosesAFile)
{
    EXPECT_EQ(chosen(folder.path(),
                  [this](QFileDialog& panel) {
                      doubleClick(panel, "sub");
                      EXPECT_TRUE(panel.isVisible());
                      EXPECT_EQ(fromQt(panel.directory().absolutePath()), folder.path("sub"));
                      doubleClick(panel, "inner");
                      EXPECT_FALSE(panel.isVisible());
                  }),
        folder.path("sub/inner"));
}

TEST_F(OpenPanel, ChoosesTheFolderShownWhenNothingIsNamed)
{
    EXPECT_EQ(
        chosen(folder.path("sub"), [](QFileDialog& panel) { button(panel)->click(); }), folder.path("sub/"));
}

TEST_F(OpenPanel, ChoosesTheFileThatItStartsAt)
{
    EXPECT_EQ(chosen(folder.path("sub/inner"), [](QFileDialog& panel) { button(panel)->click(); }),
        folder.path("sub/inner"));
}

TEST_F(OpenPanel, ChoosesWhatIsTyped)
{
    for (const char* name : {"say \"hi\"", "Käse #1", "100%25's"})
        folder.write(name, "");
    const struct {
        const char* typed;
        std::string path;
    } cases[] = {{"sub", folder.path("sub/")}, {"sub/inner", folder.path("sub/inner")},
        {"say \"hi\"", folder.path("say \"hi\"")}, {"Käse #1", folder.path("Käse #1")},
        {"100%25's", folder.path("100%25's")}, {"/", "/"},
        {"..", std::filesystem::path(folder.path()).parent_path().string() + "/"}};
    for (const auto& c : cases) {
        EXPECT_EQ(chosen(folder.path(),
                      [&](QFileDialog& panel) {
                          name(panel)->setText(QString::fromUtf8(c.typed));
                          button(panel)->click();
                      }),
            c.path)
            << c.typed;
    }
}

TEST_F(OpenPanel, ChoosesAFileOfTheHomeThatIsTyped)
{
    const test::EnvironmentVariable home("HOME", folder.path());
    EXPECT_EQ(chosen("/",
                  [](QFileDialog& panel) {
                      name(panel)->setText(QStringLiteral("~/sub/inner"));
                      button(panel)->click();
                  }),
        folder.path("sub/inner"));
}

TEST_F(OpenPanel, StillTakesTheFileThatIsNamedWhenAnotherAppears)
{
    EXPECT_EQ(chosen(folder.path(),
                  [this](QFileDialog& panel) {
                      click(panel, "file");
                      folder.write("another", "");
                      placeOf(panel, QStringLiteral("another")); // waits until it is listed
                      QCoreApplication::processEvents();
                      EXPECT_TRUE(button(panel)->isEnabled());
                      button(panel)->click();
                  }),
        folder.path("file"));
}

TEST_F(OpenPanel, StaysOpenWhenNothingHasTheName)
{
    EXPECT_EQ(chosen(folder.path(),
                  [](QFileDialog& panel) {
                      name(panel)->setText(QStringLiteral("<b>gone</b>"));
                      bool told = false;
                      QTimer::singleShot(0, [&] {
                          auto* message = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                          ASSERT_NE(message, nullptr);
                          EXPECT_EQ(message->text(), QStringLiteral("There is no “<b>gone</b>”."));
                          told = message->textFormat() == Qt::PlainText;
                          message->accept();
                      });
                      QMetaObject::invokeMethod(&panel, "accept");
                      EXPECT_TRUE(told);
                      EXPECT_TRUE(panel.isVisible());
                  }),
        std::nullopt);
}

TEST_F(OpenPanel, LooksUpWhatIsNamedWhenItChangesAndNotWhenThePointerMoves)
{
    chosen(folder.path(), [this](QFileDialog& panel) {
        name(panel)->setText(QStringLiteral("late"));
        EXPECT_FALSE(button(panel)->isEnabled());
        folder.write("late", "");
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(button(panel), &leave);
        EXPECT_FALSE(button(panel)->isEnabled());
        name(panel)->setText(QStringLiteral("lat"));
        EXPECT_FALSE(button(panel)->isEnabled());
        name(panel)->setText(QStringLiteral("late"));
        EXPECT_TRUE(button(panel)->isEnabled());
    });
}

TEST_F(OpenPanel, CanBeConfirmedOnceTheNameTypedIsThatOfAFile)
{
    EXPECT_EQ(chosen(folder.path(),
                  [](QFileDialog& panel) {
                      QTest::keyClicks(name(panel), QStringLiteral("fil"));
                      EXPECT_FALSE(button(panel)->isEnabled());
                      QTest::keyClick(name(panel), Qt::Key_E);
                      EXPECT_TRUE(button(panel)->isEnabled());
                      button(panel)->click();
                  }),
        folder.path("file"));
}

TEST_F(OpenPanel, GoesWithItsParent)
{
    EXPECT_EQ(chosen(folder.path(), [this](QFileDialog&) { parent.reset(); }), std::nullopt);
}

} // namespace quorvane::windows
