#pragma once

#include "workflow/RuleDraft.h"

#include <QWidget>

#include <array>
#include <cstdint>

class QCheckBox;

namespace quorvane::windows {

// A check box for each operation, side by side. User interface thread only.
class OperationBoxesRow : public QWidget {
    Q_OBJECT
public:
    explicit OperationBoxesRow(QWidget* parent = nullptr);

    // The ticked operations; initially none.
    std::uint32_t operations() const;

Q_SIGNALS:
    void operationsChanged();

private:
    std::array<QCheckBox*, workflow::OperationBoxes().size()> m_boxes;
};

} // namespace quorvane::windows
