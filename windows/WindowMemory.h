#pragma once

#include <QList>

class QTableView;
class QWidget;

namespace quorvane {

// Remembers the size of the main window and the widths of its columns from one run to the next, in the user's
// own settings. Unusable settings count as none.

// False when there was nothing to restore; the caller then chooses.
bool restoreWindowSize(QWidget& window);
bool restoreColumnWidths(QTableView& table);

void rememberWindowSize(const QWidget& window);
void rememberColumnWidths(const QTableView& table);

// Of all columns but the last, which takes the rest; in logical pixels.
QList<int> columnWidths(const QTableView& table);

} // namespace quorvane
