#include "windows/NoticeWindow.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QTimer>

#include <chrono>

namespace quorvane {

namespace {

constexpr int iconSize = 48;
constexpr int textWidth = 380;
constexpr std::chrono::seconds timeOut{60};

QLabel* textLabel(const QString& text)
{
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(textWidth);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

NoticeWindow::NoticeWindow(const QString& header, const QString& message, const QString& iconFile)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false); // the main window ends the program, not the last notice
    setWindowTitle(header);
    auto* image = new QLabel;
    const QIcon icon(QFileInfo::exists(iconFile) ? iconFile : QStringLiteral(":/images/lock.png"));
    image->setPixmap(icon.pixmap(QSize(iconSize, iconSize), devicePixelRatio()));
    image->setAccessibleName(tr("Lock"));
    QLabel* title = textLabel(header);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::close);

    auto* layout = new QGridLayout(this);
    constexpr int margin = 20;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setHorizontalSpacing(margin);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(image, 0, 0, 2, 1, Qt::AlignTop);
    layout->addWidget(title, 0, 1);
    layout->addWidget(textLabel(message), 1, 1);
    layout->addWidget(buttons, 2, 0, 1, 2);
    QTimer::singleShot(timeOut, this, &QDialog::close);
}

} // namespace quorvane
