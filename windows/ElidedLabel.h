#pragma once

#include <QLabel>

namespace quorvane::windows {

// One line of plain text, elided when it does not fit; the whole text is its tool tip. Never makes its window
// wider. User interface thread only.
class ElidedLabel : public QLabel {
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget* parent = nullptr);

    // Line ends are shown as spaces.
    void setText(const QString& text);

    // Where the text is elided, before it is shown; by default at its end.
    void setElideMode(Qt::TextElideMode mode);

    // The elided text.
    QString shownText() const;

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode m_elideMode = Qt::ElideRight;
};

} // namespace quorvane::windows
