#pragma once

#include <QList>
#include <QString>

class QWidget;

namespace quorvane {

class RulesTableView;

// Remembers the sizes of windows and the widths of the main window's columns from one run to the next, in the
// user's own settings. Unusable settings count as none. A window is known by its name.

// False when there was nothing to restore; the caller then chooses.
bool restoreWindowSize(QWidget& window, const QString& name = QStringLiteral("mainWindow"));
bool restoreColumnWidths(RulesTableView& table);

void rememberWindowSize(const QWidget& window, const QString& name = QStringLiteral("mainWindow"));
void rememberColumnWidths(const RulesTableView& table);

// As wished, of all columns but the last, which takes the rest; in logical pixels.
QList<int> columnWidths(const RulesTableView& table);

} // namespace quorvane
