#pragma once

#include "windows/AccessModel.h"

#include <QPixmap>
#include <QStyledItemDelegate>

namespace quorvane::windows {

// Paints the bars of the access map: allow empty, deny full, watch hatched, so that they can be distinguished
// without colours, as in the printed report. User interface thread only.
class AccessBarDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(
        QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

// A sample of a bar, for the legend.
QPixmap accessBarSample(const AccessShares& shares, QSize size, qreal devicePixelRatio);

} // namespace quorvane::windows
