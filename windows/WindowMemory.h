#pragma once

class QTableView;
class QWidget;

namespace quorvane {

// Remembers the size of the main window and the widths of its columns from one run to the next, in the user's
// own settings. Unusable settings count as none.

// False when there was nothing to restore; the caller then chooses.
bool restoreWindowSize(QWidget& window);
bool restoreColumnWidths(QTableView& table);

void rememberWindow(const QWidget& window, const QTableView& table);

} // namespace quorvane
