#include "windows/MessageWindow.h"

#include "windows/PlainText.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>

namespace quorvane::windows {

namespace {

constexpr int signSize = 48;
constexpr int textWidth = 420;
constexpr int buttonsRow = 3;

QLabel* textLabel()
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    return label;
}

// Selectable only if a copy would be exactly the text.
void showText(QLabel& label, const QString& text)
{
    const QString shown = withBreakPoints(text);
    label.setTextInteractionFlags(shown == text ? Qt::TextSelectableByMouse : Qt::NoTextInteraction);
    label.setText(shown);
}

} // namespace

MessageWindow::MessageWindow(const QString& iconFile)
    : m_layout(new QGridLayout(this))
    , m_header(textLabel())
    , m_message(textLabel())
    , m_buttons(new QDialogButtonBox)
{
    setAttribute(Qt::WA_QuitOnClose, false); // the main window ends the program, not the last message
    auto* image = new QLabel;
    const QIcon icon(QFileInfo::exists(iconFile) ? iconFile : QStringLiteral(":/images/lock.png"));
    image->setPixmap(icon.pixmap(QSize(signSize, signSize), devicePixelRatio()));
    image->setAccessibleName(tr("Lock"));
    QFont bold = m_header->font();
    bold.setBold(true);
    m_header->setFont(bold);

    constexpr int margin = 20;
    m_layout->setContentsMargins(margin, margin, margin, margin);
    m_layout->setHorizontalSpacing(margin);
    m_layout->setSizeConstraint(QLayout::SetFixedSize);
    m_layout->addWidget(image, 0, 0, 2, 1, Qt::AlignTop);
    m_layout->addWidget(m_header, 0, 1);
    m_layout->addWidget(m_message, 1, 1);
    m_layout->addWidget(m_buttons, buttonsRow, 0, 1, 2);
}

void MessageWindow::addBelowMessage(QWidget& widget)
{
    m_layout->addWidget(&widget, buttonsRow - 1, 1);
}

void MessageWindow::setTexts(const QString& header, const QString& message)
{
    setWindowTitle(plainTitle(header));
    showText(*m_header, header);
    showText(*m_message, message);
}

} // namespace quorvane::windows
