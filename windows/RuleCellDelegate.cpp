#include "windows/RuleCellDelegate.h"

#include "workflow/RuleCells.h"

namespace quorvane {

void RuleCellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    // Red, orange and blue say something: a selection must not hide it.
    option->palette.setBrush(QPalette::HighlightedText, option->palette.brush(QPalette::Text));
    if (static_cast<RuleColumn>(index.column()) == RuleColumn::state) {
        constexpr int imageSize = 12;
        option->decorationSize = QSize(imageSize, imageSize);
        option->decorationAlignment = Qt::AlignCenter;
        option->decorationPosition = QStyleOptionViewItem::Top;
    }
}

} // namespace quorvane
