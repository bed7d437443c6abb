#pragma once

#include <QHeaderView>
#include <QStyleOptionViewItem>

namespace quorvane::windows {

// Paints the check box of `option`, in its check state, centred in its rectangle.
void paintTick(QPainter& painter, QStyleOptionViewItem option, const QStyle& style);

// A header whose sort indicator points up for ascending order, and which shows a centred check box in
// sections that have a check state in the model. User interface thread only.
class TickHeader : public QHeaderView {
    Q_OBJECT
public:
    explicit TickHeader(QWidget* parent = nullptr);

protected:
    void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override;
    void paintSection(QPainter* painter, const QRect& rect, int section) const override;
};

} // namespace quorvane::windows
