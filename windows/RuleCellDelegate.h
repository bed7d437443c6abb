#pragma once

#include <QStyledItemDelegate>

namespace quorvane::windows {

// Paints the cells of a rules table: centres an image without text or a check box, and keeps the colours of
// texts and icons while selected. A click anywhere in a check box's cell toggles it; editors have their
// column's name as accessible name. User interface thread only.
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
