#include "windows/OperationBoxesRow.h"

#include <QCheckBox>
#include <QHBoxLayout>

namespace quorvane::windows {

OperationBoxesRow::OperationBoxesRow(QWidget* parent)
    : QWidget(parent)
    , m_boxes{new QCheckBox(tr("&Read"), this), new QCheckBox(tr("&Write"), this),
          new QCheckBox(tr("Cr&eate"), this), new QCheckBox(tr("&Mount"), this),
          new QCheckBox(tr("E&xecute"), this)}
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QCheckBox* box : m_boxes) {
        layout->addWidget(box);
        connect(box, &QCheckBox::toggled, this, &OperationBoxesRow::operationsChanged);
    }
    layout->addStretch();
    setFocusProxy(m_boxes.front());
}

std::uint32_t OperationBoxesRow::operations() const
{
    workflow::OperationBoxes ticked{};
    for (std::size_t box = 0; box < ticked.size(); ++box)
        ticked[box] = m_boxes[box]->isChecked();
    return workflow::operationsForBoxes(ticked);
}

} // namespace quorvane::windows
