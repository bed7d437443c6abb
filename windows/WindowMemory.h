#pragma once

#include <QList>

class QWidget;

namespace quorvane {

class RulesTableView;

// Remembers the size of the main window and the widths of its columns from one run to the next, in the user's
// own settings. Unusable settings count as none.

// False when there was nothing to restore; the caller then chooses.
bool restoreWindowSize(QWidget& window);
bool restoreColumnWidths(RulesTableView& table);

void rememberWindowSize(const QWidget& window);
void rememberColumnWidths(const RulesTableView& table);

// As wished, of all columns but the last, which takes the rest; in logical pixels.
QList<int> columnWidths(const RulesTableView& table);

} // namespace quorvane
