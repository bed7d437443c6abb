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
    : m_header(textLabel())
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

    auto* layout = new QGridLayout(this);
    constexpr int margin = 20;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setHorizontalSpacing(margin);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(image, 0, 0, 2, 1, Qt::AlignTop);
    layout->addWidget(m_header, 0, 1);
    layout->addWidget(m_message, 1, 1);
    layout->addWidget(m_buttons, 2, 0, 1, 2);
}

void MessageWindow::setTexts(const QString& header, const QString& message)
{
    setWindowTitle(plainTitle(header));
    showText(*m_header, header);
    showText(*m_message, message);
}

} // namespace quorvane::windows
