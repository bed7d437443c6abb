#pragma once

#include <QToolBar>

namespace quorvane::windows {

// A tool bar whose buttons hide their icons when there is not enough room for icons and texts. User interface
// thread only.
class ToolBar : public QToolBar {
    Q_OBJECT
public:
    using QToolBar::QToolBar;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int m_widthWithIcons = 0; // the width needed when it last had icons
};

} // namespace quorvane::windows
