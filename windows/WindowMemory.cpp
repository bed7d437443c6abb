#include "windows/WindowMemory.h"

#include "windows/RulesTableView.h"

#include <QDialog>
#include <QHeaderView>
#include <QMainWindow>
#include <QScreen>
#include <QSettings>
#include <QTableView>

namespace quorvane {

namespace {

constexpr int narrowestColumn = 24;
constexpr int widestColumn = 10000;

QString sizeKey(const QString& name)
{
    return name + QStringLiteral("/size");
}
QString docksKey()
{
    return QStringLiteral("mainWindow/docks");
}
QString kindsKey()
{
    return QStringLiteral("problems/hiddenKinds");
}
QString widthsKey()
{
    return QStringLiteral("mainWindow/columnWidths");
}

class UserSettings : public QSettings {
public:
    UserSettings()
        : QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Vantreal"),
            QStringLiteral("Quorvane Configuration"))
    {
    }
};

} // namespace

bool restoreWindowSize(QWidget& window, const QString& name)
{
    const UserSettings settings;
    const QSize size = settings.value(sizeKey(name)).toSize();
    if (size.isEmpty())
        return false;
    window.resize(size.expandedTo(window.minimumSizeHint()).boundedTo(window.screen()->availableSize()));
    return true;
}

bool keepSize(QDialog& dialog, const QString& name)
{
    QObject::connect(
        &dialog, &QDialog::finished, &dialog, [&dialog, name] { rememberWindowSize(dialog, name); });
    return restoreWindowSize(dialog, name);
}

bool restoreColumnWidths(RulesTableView& table)
{
    const UserSettings settings;
    const QVariantList widths = settings.value(widthsKey()).toList();
    if (widths.size() + 1 != table.horizontalHeader()->count())
        return false;
    QList<int> wished = table.wishedWidths();
    for (int column = 0; column < widths.size(); ++column)
        wished[column] = qBound(narrowestColumn, widths[column].toInt(), widestColumn);
    table.setWishedWidths(wished);
    return true;
}

bool restoreDocks(QMainWindow& window)
{
    return window.restoreState(UserSettings().value(docksKey()).toByteArray());
}

std::optional<QStringList> rememberedHiddenKinds()
{
    const UserSettings settings;
    return settings.contains(kindsKey()) ? std::optional(settings.value(kindsKey()).toStringList())
                                         : std::nullopt;
}

void rememberHiddenKinds(const QStringList& names)
{
    UserSettings().setValue(kindsKey(), names);
}

void rememberDocks(const QMainWindow& window)
{
    UserSettings().setValue(docksKey(), window.saveState());
}

void rememberWindowSize(const QWidget& window, const QString& name)
{
    if (!window.isMaximized() && !window.isFullScreen())
        UserSettings().setValue(sizeKey(name), window.size());
}

void rememberColumnWidths(const RulesTableView& table)
{
    QVariantList widths;
    for (const int width : columnWidths(table))
        widths.append(width);
    UserSettings().setValue(widthsKey(), widths);
}

QList<int> columnWidths(const RulesTableView& table)
{
    QList<int> widths = table.wishedWidths();
    widths.removeLast();
    return widths;
}

} // namespace quorvane
