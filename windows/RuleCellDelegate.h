#pragma once

#include <QStyledItemDelegate>

namespace quorvane::windows {

// Paints the cells of a rules table: an image without text or a check box in the middle of its column, texts
// and icons in their own colours also while selected. A click anywhere in a check box's cell ticks or unticks
// it; what is edited in a cell bears its column's name.
class RuleCellDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QWidget* createEditor(
        QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
        const QModelIndex& index) override;
};

} // namespace quorvane::windows
