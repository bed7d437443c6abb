#include "tests/pictures/KeptWords.h"

#include "tests/pictures/KeptPicture.h"
#include "tests/support/TemporaryFolder.h"

#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QMenu>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <fstream>

namespace quorvane::test {

namespace {

// In one line, without markup and without the name of the folder that a test has made.
QString plain(QString text)
{
    static const QRegularExpression markup(QStringLiteral("<[^>]*>"));
    static const QRegularExpression folder(QStringLiteral("/[^ ]*quorvane-test-\\w+"));
    text.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
    text.replace(markup, QStringLiteral("|")).replace(folder, QStringLiteral("~"));
    return text;
}

// Adds a text to the line, after what it is.
void add(QStringList& line, const char* what, const QString& text)
{
    if (!text.isEmpty())
        line.append(
            QLatin1String(what) + QLatin1Char(' ') + QLatin1Char('"') + plain(text) + QLatin1Char('"'));
}

QStringList wordsOfColumns(const QAbstractItemModel& model)
{
    QStringList line;
    for (int column = 0; column < model.columnCount(); ++column) {
        const QString title = model.headerData(column, Qt::Horizontal).toString();
        if (title != QString::number(column + 1)) // as Qt numbers them
            add(line, "column", title);
        add(line, "spoken", model.headerData(column, Qt::Horizontal, Qt::AccessibleTextRole).toString());
        add(line, "tip", model.headerData(column, Qt::Horizontal, Qt::ToolTipRole).toString());
    }
    return line;
}

QStringList wordsOfAlone(const QWidget& widget)
{
    QStringList line;
    const auto addProperty
        = [&](const char* what, const char* name) { add(line, what, widget.property(name).toString()); };
    addProperty("title", "windowTitle");
    addProperty("title", "title");
    addProperty("text", "text");
    addProperty("text", "plainText");
    addProperty("hint", "placeholderText");
    addProperty("tip", "toolTip");
    addProperty("name", "accessibleName");
    addProperty("description", "accessibleDescription");
    if (const auto* popUp = qobject_cast<const QComboBox*>(&widget)) {
        for (int item = 0; item < popUp->count(); ++item) {
            add(line, "item", popUp->itemText(item));
            add(line, "tip", popUp->itemData(item, Qt::ToolTipRole).toString());
        }
    }
    const auto* list = qobject_cast<const QAbstractItemView*>(&widget);
    if (list != nullptr && qobject_cast<const QHeaderView*>(list) == nullptr && list->model() != nullptr)
        line += wordsOfColumns(*list->model());
    return line;
}

QStringList wordsOfAction(const QAction& action)
{
    QStringList line;
    add(line, "item", action.text());
    for (const QKeySequence& keys : action.shortcuts())
        add(line, "keys", keys.toString(QKeySequence::PortableText));
    QString usualTip = action.text();
    if (usualTip.remove(QLatin1Char('&')).remove(QStringLiteral("...")) != action.toolTip())
        add(line, "tip", action.toolTip());
    return line;
}

void addWords(QStringList& lines, const QWidget& widget, const QString& indent)
{
    const QStringList alone = wordsOfAlone(widget);
    if (!alone.isEmpty())
        lines.append(indent + alone.join(QStringLiteral(", ")));
    const QString below = alone.isEmpty() ? indent : indent + QStringLiteral("  ");
    for (const QObject* child : widget.children()) {
        if (const auto* inner = qobject_cast<const QWidget*>(child))
            addWords(lines, *inner, below);
        else if (const auto* action = qobject_cast<const QAction*>(child);
                 action != nullptr && action->menu<QMenu*>() == nullptr && !action->isSeparator())
            lines.append(below + wordsOfAction(*action).join(QStringLiteral(", ")));
    }
}

} // namespace

std::string wordsOf(const QWidget& widget)
{
    QStringList lines;
    addWords(lines, widget, {});
    return lines.join(QLatin1Char('\n')).toStdString() + '\n';
}

std::optional<std::string> differenceOfWords(const std::string& kept, const std::string& seen)
{
    const QStringList wanted = QString::fromStdString(kept).split(QLatin1Char('\n'));
    const QStringList found = QString::fromStdString(seen).split(QLatin1Char('\n'));
    for (qsizetype line = 0; line < std::max(wanted.size(), found.size()); ++line) {
        if (wanted.value(line) != found.value(line))
            return "kept: " + wanted.value(line).toStdString() + "\nseen: " + found.value(line).toStdString();
    }
    return std::nullopt;
}

testing::AssertionResult readsAsKept(const std::string& name, const std::string& seen)
{
    const std::string file = QUORVANE_PICTURES_FOLDER "/kept/" + name + ".txt";
    if (areRenewed())
        std::ofstream(file) << seen;
    const auto difference = differenceOfWords(TemporaryFolder::contents(file), seen);
    return difference
        ? testing::AssertionFailure() << *difference << "\nwhen it is meant: tools/renew_pictures"
        : testing::AssertionSuccess();
}

} // namespace quorvane::test
