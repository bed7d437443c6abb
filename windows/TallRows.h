#pragma once

#include <QStyledItemDelegate>

namespace quorvane::windows {

// Rows as high as those of the rules table.
class TallRows : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        constexpr int rowHeight = 24; // logical pixels
        return QStyledItemDelegate::sizeHint(option, index).expandedTo({0, rowHeight});
    }
};

} // namespace quorvane::windows
