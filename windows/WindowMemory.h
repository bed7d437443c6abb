#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class QDialog;
class QMainWindow;
class QWidget;

namespace quorvane::windows {

class RulesTableView;

// Remembers the sizes of windows, and the columns and docks of the main window, from one run to the next, in
// the user's own settings. Unusable settings count as none. A window is known by its name.

// False when there was nothing to restore; the caller then chooses.
bool restoreWindowSize(QWidget& window, const QString& name = QStringLiteral("mainWindow"));
// The same of a dialog, whose size is remembered when it closes.
bool keepSize(QDialog& dialog, const QString& name);
bool restoreColumnWidths(RulesTableView& table);
// Which columns are shown, and in what order.
bool restoreColumns(RulesTableView& table);
// What stands around the table of the main window: what of it is shown, where and how large.
bool restoreDocks(QMainWindow& window);

// The names of the kinds of problems that are left out; none when nobody has chosen any.
std::optional<QStringList> rememberedHiddenKinds();

void rememberWindowSize(const QWidget& window, const QString& name = QStringLiteral("mainWindow"));
void rememberColumnWidths(const RulesTableView& table);
// The next time they are as wide as what they show.
void forgetColumnWidths();
void rememberColumns(const RulesTableView& table);
void rememberDocks(const QMainWindow& window);
void rememberHiddenKinds(const QStringList& names);

} // namespace quorvane::windows
