#pragma once

#include <QAbstractItemModel>
#include <QString>

#include <string>

namespace quorvane::test {

// The titles of a model's columns, each with a bar behind it.
inline std::string titlesOf(const QAbstractItemModel& model)
{
    std::string titles;
    for (int column = 0; column < model.columnCount(); ++column)
        titles += model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString().toStdString() + "|";
    return titles;
}

} // namespace quorvane::test
