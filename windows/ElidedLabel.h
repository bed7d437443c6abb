#pragma once

#include <QLabel>

namespace quorvane::windows {

// One line of plain text that is cut short with an ellipsis where there is no room for it; the whole text is
// its tool tip. Never makes its window wider.
class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    // Line ends show as spaces.
    void setText(const QString& text);

    // Where the text is cut; at its end at first.
    void setElideMode(Qt::TextElideMode mode);

    // As it fits.
    QString shownText() const;

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode m_elideMode = Qt::ElideRight;
};

} // namespace quorvane::windows
