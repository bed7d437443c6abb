#pragma once

#include <QToolBar>

namespace quorvane::windows {

// A tool bar whose buttons leave out their icons where there is no room for icons and texts.
class ToolBar : public QToolBar {
    Q_OBJECT
public:
    using QToolBar::QToolBar;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int m_widthWithIcons = 0; // as needed when it last had them
};

} // namespace quorvane::windows
