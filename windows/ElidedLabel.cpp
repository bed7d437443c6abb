#include "windows/ElidedLabel.h"

#include "windows/PlainText.h"

#include <QPainter>
#include <QStyle>

namespace quorvane::windows {

ElidedLabel::ElidedLabel(QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

void ElidedLabel::setText(const QString& text)
{
    QLabel::setText(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' ')));
    setToolTip(plainToolTip(text));
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode)
{
    m_elideMode = mode;
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), m_elideMode, contentsRect().width() - 2 * margin());
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    const QRect place = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
    const auto alignment = QStyle::visualAlignment(layoutDirection(), Qt::AlignVCenter | Qt::AlignLeft);
    painter.setLayoutDirection(Qt::LayoutDirectionAuto); // English text runs from left to right in any window
    painter.drawText(place, static_cast<int>(alignment | Qt::AlignAbsolute), shownText());
}

} // namespace quorvane::windows
