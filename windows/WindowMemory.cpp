#include "windows/WindowMemory.h"

#include <QHeaderView>
#include <QScreen>
#include <QSettings>
#include <QTableView>

namespace quorvane {

namespace {

constexpr int narrowestColumn = 24;
constexpr int widestColumn = 10000;

QString sizeKey()
{
    return QStringLiteral("mainWindow/size");
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

bool restoreWindowSize(QWidget& window)
{
    const UserSettings settings;
    const QSize size = settings.value(sizeKey()).toSize();
    if (size.isEmpty())
        return false;
    window.resize(size.expandedTo(window.minimumSizeHint()).boundedTo(window.screen()->availableSize()));
    return true;
}

bool restoreColumnWidths(QTableView& table)
{
    const UserSettings settings;
    const QVariantList widths = settings.value(widthsKey()).toList();
    if (widths.size() + 1 != table.horizontalHeader()->count())
        return false;
    for (int column = 0; column < widths.size(); ++column)
        table.setColumnWidth(column, qBound(narrowestColumn, widths[column].toInt(), widestColumn));
    return true;
}

void rememberWindowSize(const QWidget& window)
{
    if (!window.isMaximized() && !window.isFullScreen())
        UserSettings().setValue(sizeKey(), window.size());
}

void rememberColumnWidths(const QTableView& table)
{
    QVariantList widths;
    for (const int width : columnWidths(table))
        widths.append(width);
    UserSettings().setValue(widthsKey(), widths);
}

QList<int> columnWidths(const QTableView& table)
{
    QList<int> widths;
    for (int column = 0; column + 1 < table.horizontalHeader()->count(); ++column)
        widths.append(table.columnWidth(column));
    return widths;
}

} // namespace quorvane
