#pragma once

#include <QObject>
#include <QPoint>

#include <vector>

class QAction;
class QMenu;

namespace quorvane::windows {

class RulesTableView;

// Menu items that show and hide the columns of a table, at least one of which stays, move one of them to the
// front, and restore the default columns. The menu is also the context menu of the header, whose columns can
// be moved with the mouse. User interface thread only.
class ColumnsMenu : public QObject {
    Q_OBJECT
public:
    // Owns neither; both must outlive this object. Requires a table with its model set.
    ColumnsMenu(RulesTableView& table, QMenu& menu);

private:
    void update();
    void putFirst(int column);
    void showUsualColumns();

    RulesTableView& m_table;
    std::vector<QAction*> m_columns; // by number; owned by the menu
};

} // namespace quorvane::windows
