#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QDialog;
class QMainWindow;
class QWidget;

namespace quorvane::windows {

class RulesTableView;

// Remembers the sizes of windows, and the columns and docks of the main window, across runs in the user's
// settings. Invalid settings count as missing. A window is identified by its name. User interface thread
// only.

// False when there was nothing to restore; the caller then uses a default.
bool restoreWindowSize(QWidget& window, const QString& name = QStringLiteral("mainWindow"));
// The same for a dialog, and remembers its size when it closes.
bool keepSize(QDialog& dialog, const QString& name);
bool restoreColumnWidths(RulesTableView& table);
// Which columns are visible, and in what order.
bool restoreColumns(RulesTableView& table);
// The docks around the table of the main window: which are visible, where, and their sizes.
bool restoreDocks(QMainWindow& window);

// The names of the hidden kinds of problems; none when the user has not chosen any.
std::optional<QStringList> rememberedHiddenKinds();

void rememberWindowSize(const QWidget& window, const QString& name = QStringLiteral("mainWindow"));
void rememberColumnWidths(const RulesTableView& table);
// The next time they are fitted to their contents.
void forgetColumnWidths();
void rememberColumns(const RulesTableView& table);
void rememberDocks(const QMainWindow& window);
void rememberHiddenKinds(const QStringList& names);

} // namespace quorvane::windows
