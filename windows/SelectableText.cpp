#include "windows/SelectableText.h"

#include "windows/Shades.h"

#include <QEvent>

#include <algorithm>
#include <cmath>

namespace quorvane::windows {

SelectableText::SelectableText(QWidget* parent)
    : QTextEdit(parent)
    , m_shade(&shades::text)
{
    setReadOnly(true);
    setFrameShape(QFrame::NoFrame);
    setTabChangesFocus(true);
    setFocusPolicy(Qt::StrongFocus); // not by the wheel, which scrolls its container
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(0);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void SelectableText::setText(const QString& text)
{
    if (text == toPlainText())
        return;
    setPlainText(text);
    fitHeight();
}

void SelectableText::setShade(const Shade& shade)
{
    m_shade = &shade;
    applyShade();
}

void SelectableText::applyShade()
{
    if (palette().color(QPalette::Text) == *m_shade)
        return;
    QPalette shades; // sets only this colour: the others keep following the application's palette
    shades.setColor(QPalette::Text, *m_shade);
    setPalette(shades);
}

void SelectableText::changeEvent(QEvent* event)
{
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        applyShade();
}

QSize SelectableText::sizeHint() const
{
    return {0, height()};
}

QSize SelectableText::minimumSizeHint() const
{
    return {0, 0};
}

void SelectableText::resizeEvent(QResizeEvent* event)
{
    QTextEdit::resizeEvent(event);
    fitHeight();
}

void SelectableText::fitHeight()
{
    document()->setTextWidth(viewport()->width());
    setFixedHeight(
        std::max(fontMetrics().height(), static_cast<int>(std::ceil(document()->size().height()))));
}

} // namespace quorvane::windows
