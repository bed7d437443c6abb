#include "windows/WindowMemory.h"

#include "windows/RulesTableView.h"

#include <QDialog>
#include <QHeaderView>
#include <QMainWindow>
#include <QScreen>
#include <QSettings>
#include <QTableView>

#include <algorithm>

namespace quorvane::windows {

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
QString orderKey()
{
    return QStringLiteral("mainWindow/columnOrder");
}
QString hiddenColumnsKey()
{
    return QStringLiteral("mainWindow/hiddenColumns");
}
QString widthsKey()
{
    return QStringLiteral("mainWindow/columnWidths");
}

QVariantList asVariants(const QList<int>& numbers)
{
    return {numbers.begin(), numbers.end()};
}

QList<int> asNumbers(const QVariant& setting)
{
    QList<int> numbers;
    for (const QVariant& each : setting.toList())
        numbers.append(each.toInt());
    return numbers;
}

bool isOrderOf(QList<int> order, int columns)
{
    std::sort(order.begin(), order.end());
    for (int column = 0; column < columns; ++column) {
        if (order.value(column, -1) != column)
            return false;
    }
    return order.size() == columns;
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
    const QList<int> widths = asNumbers(settings.value(widthsKey()));
    if (widths.size() + 1 != table.horizontalHeader()->count())
        return false;
    QList<int> wished = table.wishedWidths();
    for (int column = 0; column < widths.size(); ++column)
        wished[column] = qBound(narrowestColumn, widths[column], widestColumn);
    table.setWishedWidths(wished);
    return true;
}

bool restoreColumns(RulesTableView& table)
{
    const UserSettings settings;
    QHeaderView* header = table.horizontalHeader();
    const QList<int> order = asNumbers(settings.value(orderKey()));
    if (!isOrderOf(order, header->count()))
        return false;
    for (int place = 0; place < order.size(); ++place)
        header->moveSection(header->visualIndex(order[place]), place);
    for (const int column : asNumbers(settings.value(hiddenColumnsKey()))) {
        if (column >= 0 && column < header->count())
            table.setColumnShown(column, false);
    }
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
    QList<int> widths = table.wishedWidths();
    widths.removeLast(); // the last column takes the rest
    UserSettings().setValue(widthsKey(), asVariants(widths));
}

void forgetColumnWidths()
{
    UserSettings().remove(widthsKey());
}

void rememberColumns(const RulesTableView& table)
{
    const QHeaderView& header = *table.horizontalHeader();
    QList<int> order;
    QList<int> hidden;
    for (int place = 0; place < header.count(); ++place) {
        order.append(header.logicalIndex(place));
        if (header.isSectionHidden(order.back()))
            hidden.append(order.back());
    }
    UserSettings settings;
    settings.setValue(orderKey(), asVariants(order));
    settings.setValue(hiddenColumnsKey(), asVariants(hidden));
}

} // namespace quorvane::windows
