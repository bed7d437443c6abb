#pragma once

#include <QObject>
#include <QPoint>

#include <vector>

class QAction;
class QMenu;

namespace quorvane::windows {

class RulesTableView;

// The items of a menu that show and hide the columns of a table, one of which stays at least, put one of them
// first, and bring the usual columns back. The menu opens on the titles of the columns as well, which can be
// moved with the mouse. User interface thread only.
class ColumnsMenu : public QObject {
    Q_OBJECT
public:
    // Neither is owned; both must outlive this. The table has its model already.
    ColumnsMenu(RulesTableView& table, QMenu& menu);

private:
    void update();
    void putFirst(int column);
    void showUsualColumns();

    RulesTableView& m_table;
    std::vector<QAction*> m_columns; // by number; owned by the menu
};

} // namespace quorvane::windows
