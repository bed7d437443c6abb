#pragma once

#include "tests/pictures/KeptPicture.h"
#include "tests/pictures/KeptWords.h"
#include "tests/windows/EditorTable.h"
#include "windows/RuleCellsModel.h"
#include "windows/RuleStrip.h"
#include "windows/Shades.h"

#include <QBrush>
#include <QSettings>
#include <QSignalSpy>

#include <ctime>
#include <initializer_list>
#include <stdexcept>
#include <string>

namespace quorvane::test {

// Makes the cells of the table anew when it is painted next, and the band of its first group white. Bands
// flip from group to group for the whole process; so they would tell which pictures were taken before.
inline void beginBands(const windows::RulesTableView& table)
{
    auto& model = dynamic_cast<windows::RuleCellsModel&>(*table.model());
    int start = 0;
    while (start + 1 < model.rowCount() && model.index(start, 0).data().toString().isEmpty())
        ++start;
    const auto flip = [&] {
        model.setShownRows(0, 0);
        model.setShownRows(start, start + 1);
        return model.index(start, 0).data(Qt::BackgroundRole).value<QBrush>().color();
    };
    if (flip() == windows::shades::table)
        flip();
    model.setShownRows(0, 0);
}

// The main window with rules that look in every way in which a rule can look.
class MainWindowPictures : public EditorTable {
protected:
    MainWindowPictures() { QSettings().clear(); } // what windows of other tests have left

    static constexpr QSize usualSize{720, 500};

    // A rule for each row.
    static std::string rulesOfAllKinds()
    {
        const std::string otherDigest = "da39a3ee5e6b4b0d3255bfef95601890afd80709";
        const std::string now = std::to_string(std::time(nullptr));
        return "watch prefix \"/Volumes/\" \"any\" m \"disks\"\n"
               "watch suffix \".pem\" \"/bin/sh\" r \"\"\n"
               "allow prefix \"/etc/\" \"/bin/sh\" rwcmx \"shell\" \"\" \"0\"\n"
               "allow path \"/etc/passwd\" \"/bin/sh\" r \"covered\" \"\" \"0\"\n"
               "deny path \"/nonexistent/letter.txt\" \"/bin/sh\" w \"\" \"\" \"0\"\n"
               "deny prefix \"/usr/\" \"/bin/cat\" wc \"bound\" \""
            + otherDigest
            + "\" \"0\"\n"
              "allow suffix \".jpg\" \"/Applications/Photo Tools.app/Contents/MacOS/Photo Tools\" rw "
              "\"photos\" "
              "\"\" \"0\"\n"
              "allow prefix \"/tmp/\" \"/nonexistent/tool\" r \"\" \"\" \"0\"\n"
              "allow prefix \"/usr/share/\" \"/bin/ls via /bin/sh\" x \"\" \"\" \""
            + now
            + "\"\n"
              "deny prefix \"any\" \"any\" x \"\" \"\" \"0\"\n";
    }

    // Opens the window on these rules, and on one of the system's, which is not shown.
    void openOn(const std::string& userRules, QSize size = usualSize)
    {
        box.writeSystemFile("quorvane.rc", "allow prefix \"/usr/lib/\" \"/bin/dd\" rx \"sealed\"\n");
        open(userRules, box.folder.path("state"));
        window->resize(size);
        table->clearSelection();
        table->setFocus();
        QApplication::processEvents();
    }

    // The first row that shows this path.
    int rowOf(const char* path) const
    {
        int row = 0;
        while (
            row < table->model()->rowCount() && text(row, workflow::RuleColumn::path) != QLatin1String(path))
            ++row;
        EXPECT_LT(row, table->model()->rowCount()) << path;
        return row;
    }
    // The last of these paths gets the keyboard.
    void selectPaths(std::initializer_list<const char*> paths)
    {
        table->clearSelection();
        for (const char* path : paths) {
            table->selectionModel()->setCurrentIndex(cell(rowOf(path), workflow::RuleColumn::path),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    // The same, and waits until the rules are put into words below the table.
    void selectAndRead(std::initializer_list<const char*> paths)
    {
        QSignalSpy filled(window->findChild<windows::RuleStrip*>(), &windows::RuleStrip::wasFilled);
        selectPaths(paths);
        ASSERT_TRUE(filled.wait());
    }

    // The window that the item opens, in that size.
    template <class Window> Window& openWith(const char* item, QSize size)
    {
        action(item)->trigger();
        auto* opened = window->findChild<Window*>();
        if (opened == nullptr)
            throw std::runtime_error(item);
        opened->resize(size);
        EXPECT_TRUE(QTest::qWaitForWindowActive(opened));
        return *opened;
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
};

} // namespace quorvane::test
