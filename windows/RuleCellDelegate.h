#pragma once

#include <QStyledItemDelegate>

namespace quorvane {

// Paints the cells of a rules table: an image without text in the middle of its column, texts in their own
// colour also while selected.
class RuleCellDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

} // namespace quorvane
