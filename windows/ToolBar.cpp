#include "windows/ToolBar.h"

namespace quorvane::windows {

void ToolBar::resizeEvent(QResizeEvent* event)
{
    if (toolButtonStyle() == Qt::ToolButtonTextBesideIcon)
        m_widthWithIcons = sizeHint().width();
    setToolButtonStyle(width() < m_widthWithIcons ? Qt::ToolButtonTextOnly : Qt::ToolButtonTextBesideIcon);
    QToolBar::resizeEvent(event);
}

} // namespace quorvane::windows
