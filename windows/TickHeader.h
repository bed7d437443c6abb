#pragma once

#include <QHeaderView>
#include <QStyleOptionViewItem>

namespace quorvane::windows {

// Paints the check box of `option`, in its check state, in the middle of its rectangle.
void paintTick(QPainter& painter, QStyleOptionViewItem option, const QStyle& style);

// Column titles whose mark of the order points up while it ascends, and of which those that the model gives a
// check state show it in the middle of their section.
class TickHeader : public QHeaderView {
    Q_OBJECT
public:
    explicit TickHeader(QWidget* parent = nullptr);

protected:
    void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override;
    void paintSection(QPainter* painter, const QRect& rect, int section) const override;
};

} // namespace quorvane::windows
